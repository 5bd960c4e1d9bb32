// Archive: what only Linux can be made to do.

#include <unistd.h>

#include "library/zip.h"
#include "support/linux/forked_process.h"

namespace {

using namespace FileSystem;

class ArchiveOnLinux : public Zip {};

int lowestFreeDescriptor() {
  const int descriptor = dup(STDIN_FILENO);
  close(descriptor);
  return descriptor;
}

TEST_F(ArchiveOnLinux, SaysWhyAFileCannotBeWritten) {
  ZipArchive made;
  ASSERT_EQ(made.create(path_.c_str(), 0), 1);
  ASSERT_EQ(made.insert(Bytes(600'000, 'x'), "large", "", 0), 1);
  made.close();
  const Archive archive = openArchive();
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

  EXPECT_TRUE(support::withinSize(100'000, [&] { return reasonNow() == Reason::DiskFull; }));
  EXPECT_FALSE(support::exists(file));
  // No descriptor is free for the file.
  const rlim_t open = static_cast<rlim_t>(lowestFreeDescriptor());
  EXPECT_TRUE(
      support::within(RLIMIT_NOFILE, open, [&] { return reasonNow() == Reason::WriteFailed; }));
  EXPECT_FALSE(support::exists(file));
}

}  // namespace
