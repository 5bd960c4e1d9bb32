// Copying and unpacking to file systems that store less than the one of the source: names without
// letter case, times of seconds, and no modes. Each is an image that the superuser mounts, or the
// directory that VESK_CASEFOLD names.

#include <sys/mount.h>
#include <sys/stat.h>

#include <cstdlib>
#include <ostream>

#include "library/zip.h"

namespace {

using FileSystem::CopyContent;

struct Image {
  const char* name;
  const char* make;     // the command that makes the file system in a file
  const char* prepare;  // the command that prepares it when it is mounted
  bool hasCase;
};

void PrintTo(const Image& image, std::ostream* out) { *out << image.name; }

class Mounted : public Zip, public testing::WithParamInterface<Image> {
 protected:
  void SetUp() override {
    const char* const given = std::getenv("VESK_CASEFOLD");
    if (given != nullptr && std::string(GetParam().name) == "casefold") {
      target_ = std::string(given) + "/vesk-mounted-test";
      std::filesystem::remove_all(target_);
      std::filesystem::create_directory(target_);
      return;
    }
    const std::string make = std::string("truncate -s 40M image && mkdir mounted && ") +
                             "PATH=$PATH:/usr/sbin:/sbin && " + GetParam().make +
                             " image && mount -o loop image mounted";
    isMounted_ = support::run(folder_.path(), make) == 0;
    if (!isMounted_) GTEST_SKIP() << GetParam().name << " cannot be made or mounted here";
    shell(GetParam().prepare);
  }
  ~Mounted() override {
    std::error_code ignored;
    std::filesystem::remove_all(target_, ignored);
    if (isMounted_) umount(folder_.file("mounted").c_str());
  }

  // Each copy has its own name as its content, or as the end of it.
  void expectThreeWholeFiles() const {
    int count = 0;
    for (const auto& item : std::filesystem::recursive_directory_iterator(target_)) {
      if (item.is_directory()) continue;
      ++count;
      EXPECT_TRUE(support::readFile(item.path()).ends_with(item.path().filename().string()))
          << item.path();
    }
    EXPECT_EQ(count, 3);
  }

  std::string in() const { return folder_.text() + "in\\"; }
  std::string out() const { return target_ + "\\"; }

  std::string target_ = folder_.file("mounted/out");
  bool isMounted_ = false;
};

// A copy is not older than its source, so it is not made again.
TEST_P(Mounted, CopiesAreNeverOlder) {
  const std::string source = folder_.file("in/file");
  for (const std::time_t seconds : {1600000001, 1600000002}) {
    for (const long nanoseconds : {0L, 100L, 7000000L, 999999900L}) {
      for (const bool exists : {false, true}) {
        SCOPED_TRACE(testing::Message() << seconds << ' ' << nanoseconds << ' ' << exists);
        std::filesystem::remove(target_ + "/file");
        if (exists) {
          support::writeFile(target_ + "/file", "old");
          support::setWriteTime(target_ + "/file", 1500000000);
        }
        support::writeFile(source, "content");
        support::setWriteTime(source, seconds, nanoseconds);
        const auto copies = [&] {
          return FileSystem::CopyFileA(source.c_str(), out().c_str(),
                                       FileSystem::kCopyIfMissingOrOlder);
        };
        EXPECT_NE(copies(), 0);
        EXPECT_EQ(copies(), 0);
        struct stat copy {};
        ASSERT_EQ(stat((target_ + "/file").c_str(), &copy), 0);
        EXPECT_LE(copy.st_mtim.tv_sec, seconds + 2);
      }
    }
  }
}

TEST_P(Mounted, CopiesAreReadOnlyAsTheirSources) {
  const std::string source = folder_.file("in/file");
  support::writeFile(source, "content");
  support::makeReadOnly(source);
  EXPECT_EQ(CopyContent(in(), out()), 1);
  EXPECT_EQ(FileSystem::IsFileReadOnly((out() + "file").c_str()), 1);
}

TEST_P(Mounted, NamesInAnyCaseAreOneFile) {
  if (GetParam().hasCase) GTEST_SKIP() << "every name is another file here";
  support::writeFile(target_ + "/Sub/A.txt", "old");
  EXPECT_EQ(FileSystem::FileExists((target_ + "/sUB/a.TXT").c_str()), 1);
  EXPECT_EQ(FileSystem::EnsurePathExists((target_ + "/sub").c_str()), 1);

  // A copy meets the existing name, also its own.
  const std::string source = folder_.file("a.TXT");
  support::writeFile(source, "new");
  const auto copy = [&](const std::string& from, unsigned mode) {
    return FileSystem::CopyFileA(from.c_str(), (out() + "sub\\").c_str(), mode) != 0;
  };
  EXPECT_FALSE(copy(source, FileSystem::kCopyIfMissing));
  EXPECT_TRUE(copy(source, FileSystem::kCopyIfExisting));
  EXPECT_FALSE(copy(out() + "sub\\a.txt", FileSystem::kCopyAlways));
  EXPECT_EQ(support::readFile(target_ + "/Sub/A.txt"), "new");
}

// Two names that are one in the target: the first file stays, and the second fails.
TEST_P(Mounted, NamesThatAreOneLoseNoFile) {
  if (GetParam().hasCase) GTEST_SKIP() << "every name is another file here";
  if (!support::fileSystem().exactCase) GTEST_SKIP() << "the source has such names";
  const Names names{"A", "a", "dir\\f", "DIR\\F", "b"};
  make(names);
  ASSERT_TRUE(FRT_UNZIP_FILE(path_.c_str(), in().c_str()));

  const auto expectTwins = [&](FileSystem::ExistingFiles existing) {
    const FileSystem::Archive reader = openArchive();
    const FileSystem::Report report =
        reader.unpack(reader.entries(), out().c_str(), FileSystem::Options().setExisting(existing));
    std::vector<std::string> others;
    for (const FileSystem::ItemResult& item : report.items) others.push_back(item.other);
    EXPECT_EQ(others, (std::vector<std::string>{"", "A", "", "dir\\f", ""}));
    EXPECT_EQ(support::readFile(target_ + "/A"), "A");
    EXPECT_EQ(support::readFile(target_ + "/dir/f"), "dir\\f");
  };

  // The second time all files exist before.
  for (const char* const when : {"new", "existing"}) {
    SCOPED_TRACE(when);
    EXPECT_EQ(CopyContent(in(), out()), 3);
    expectThreeWholeFiles();
    int twins = 0;
    for (const FileSystem::ItemResult& item :
         FileSystem::copyTree(in().c_str(), out().c_str()).items) {
      if (item.reason != FileSystem::Reason::SameFile) continue;
      ++twins;
      EXPECT_STRCASEEQ(item.other.c_str(), item.name.c_str());
      EXPECT_NE(item.other, item.name);
    }
    EXPECT_EQ(twins, 2);
  }
  for (const char* const when : {"existing", "new"}) {
    SCOPED_TRACE(when);
    EXPECT_FALSE(FRT_UNZIP_FILE(path_.c_str(), out().c_str()));
    EXPECT_EQ(support::readFile(target_ + "/A"), "A");
    EXPECT_EQ(readable().extract(names, out().c_str()), 1);
    EXPECT_EQ(support::readFile(target_ + "/A"), "A");
    EXPECT_EQ(support::readFile(target_ + "/dir/f"), "dir\\f");
    EXPECT_EQ(support::readFile(target_ + "/b"), "b");
    expectTwins(FileSystem::ExistingFiles::Replace);
    std::filesystem::remove_all(target_ + "/A");
    std::filesystem::remove_all(target_ + "/dir");
    std::filesystem::remove_all(target_ + "/b");
  }
  expectTwins(FileSystem::ExistingFiles::Keep);
}

const Image kImages[] = {
    {"vfat", "mkfs.vfat", "mkdir mounted/out", false},
    {"exfat", "mkfs.exfat", "mkdir mounted/out", false},
    {"casefold", "mkfs.ext4 -q -O casefold", "mkdir mounted/out && chattr +F mounted/out", false},
    {"seconds", "mkfs.ext4 -q -I 128", "mkdir mounted/out", true},
};

INSTANTIATE_TEST_SUITE_P(All, Mounted, testing::ValuesIn(kImages),
                         testing::PrintToStringParamName());

}  // namespace
