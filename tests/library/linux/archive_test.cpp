// Archive: what only Linux can be made to do.

#include <filesystem/archive.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <functional>

#include "library/zip.h"
#include "support/linux/forked_process.h"
#include "support/open_file.h"
#include "support/platform.h"
#include "support/programs.h"

namespace {

using FileSystem::Archive;
using FileSystem::ExistingFiles;
using FileSystem::Options;
using FileSystem::Reason;
using FileSystem::Report;

class ArchiveOnLinux : public Zip {};

// Returns the result of `work` in a process with that limit of a resource.
Reason reasonWithin(__rlimit_resource resource, rlim_t size, const std::function<Reason()>& work) {
  support::ForkedProcess process([&](const auto&) {
    const rlimit limit{size, size};
    setrlimit(resource, &limit);
    return static_cast<int>(work());
  });
  return static_cast<Reason>(process.wait());
}

int lowestFreeDescriptor() {
  const int descriptor = dup(STDIN_FILENO);
  close(descriptor);
  return descriptor;
}

// A link is kept itself, also one to nothing, and nothing is written through it.
TEST_F(ArchiveOnLinux, UnpackingKeepsLinks) {
  if (!support::fileSystem().links) GTEST_SKIP() << "no links here";
  support::writeFile(folder_.file("outside/file"), "untouched");
  make({"link"});
  Archive archive;
  ASSERT_EQ(archive.open(path_.c_str()), Reason::None);
  for (const char* const target : {"../outside/file", "../outside/missing", "../outside"}) {
    SCOPED_TRACE(target);
    std::filesystem::remove_all(out_);
    std::filesystem::create_directory(out_);
    std::filesystem::create_symlink(target, out_ + "/link");
    const Report report =
        archive.unpack(archive.entries(), out_.c_str(), Options().setExisting(ExistingFiles::Keep));
    ASSERT_EQ(report.items.size(), 1U);
    EXPECT_EQ(report.items[0].reason, Reason::Exists);
    EXPECT_EQ(std::filesystem::read_symlink(out_ + "/link"), target);
    EXPECT_EQ(support::outputOf(folder_.path(), "ls outside; cat outside/file"), "file\nuntouched");
  }
}

TEST_F(ArchiveOnLinux, SaysWhyAFileCannotBeWritten) {
  ZipArchive made;
  ASSERT_EQ(made.create(path_.c_str(), 0), 1);
  ASSERT_EQ(made.insert(Bytes(600'000, 'x'), "large", "", 0), 1);
  made.close();
  Archive archive;
  ASSERT_EQ(archive.open(path_.c_str()), Reason::None);
  const auto reasonNow = [&] {
    const Report report = archive.unpack(archive.entries(), out_.c_str());
    return report.items.empty() ? report.reason : report.items[0].reason;
  };
  const std::string file = out_ + "/large";
  support::writeFile(file, "old");
  {
    const platform::FileHandle user = support::openFile(file, GENERIC_READ, FILE_SHARE_READ);
    EXPECT_EQ(reasonNow(), Reason::InUse);
  }
  support::makeReadOnly(file);
  EXPECT_EQ(reasonNow(), Reason::NoPermission);
  std::filesystem::remove(file);

  std::signal(SIGXFSZ, SIG_IGN);
  EXPECT_EQ(reasonWithin(RLIMIT_FSIZE, 100'000, reasonNow), Reason::DiskFull);
  EXPECT_FALSE(support::exists(file));
  // No descriptor is free for the file.
  const rlim_t open = static_cast<rlim_t>(lowestFreeDescriptor());
  EXPECT_EQ(reasonWithin(RLIMIT_NOFILE, open, reasonNow), Reason::WriteFailed);
  EXPECT_FALSE(support::exists(file));
}

}  // namespace
