// Who may access a replaced file, and its new version before that takes its place.

#include <fcntl.h>
#include <grp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <ostream>

#include "failing_calls.h"
#include "library/zip.h"
#include "support/linux/access_list.h"
#include "support/linux/forked_process.h"
#include "support/linux/left_over.h"
#include "support/linux/temporary_variable.h"

namespace {

using Access = std::map<std::string, int>;

constexpr uid_t kColleague = 1002;
constexpr uid_t kCaller = 1001;
constexpr gid_t kSharedGroup = 2000;
constexpr uid_t kGuest = 1003;

// A target, or the folder that it is in.
struct Target {
  const char* what;
  // Prepares the target. False if the file system lacks what it takes.
  std::function<bool(const std::string& folder, const std::string& file)> prepare;
  mode_t mode;               // of the target after the replacement
  bool isCallersOwn = true;  // otherwise another user replaces a file of the same group
  bool hasProc = true;
  bool staysSameFile = false;
};

bool setMode(const std::string& file, mode_t mode) {
  return support::fileSystem().modes && chmod(file.c_str(), mode) == 0;
}

bool setAttribute(const std::string& file, const char* name, const std::string& value) {
  return setxattr(file.c_str(), name, value.data(), value.size(), 0) == 0;
}

bool becomeCaller() {
  return setgroups(1, &kSharedGroup) == 0 && setgid(kCaller) == 0 && setuid(kCaller) == 0;
}

// A program may use ports that need privileges.
const std::string kCapability("\1\0\0\2\0\4\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 20);

const Target kTargets[] = {
    {"permissions", [](auto&, auto& file) { return setMode(file, 0604); }, 0604},
    {"owner alone and one more user",
     [](auto&, auto& file) {
       return support::setList(file, support::kAccessList, support::listFor(kGuest, 0, 0));
     },
     0660},
    {"default list of the folder",
     [](auto& folder, auto& file) {
       return setMode(file, 0640) &&
              support::setList(folder, support::kDefaultList, support::listFor(kGuest, 6, 6));
     },
     0640},
    {"owner's and group's identity", [](auto&, auto& file) { return setMode(file, 06755); }, 0755},
    {"user attribute",
     [](auto&, auto& file) { return setMode(file, 0600) && setAttribute(file, "user.note", "n"); },
     0600},
    {"capability",
     [](auto&, auto& file) {
       return setMode(file, 0700) && setAttribute(file, "security.capability", kCapability);
     },
     0700},
    {"other owner",
     [](auto&, auto& file) {
       return chown(file.c_str(), kColleague, kSharedGroup) == 0 && setMode(file, 0640);
     },
     0640},
    {"colleague's file",
     [](auto&, auto& file) {
       return chown(file.c_str(), kColleague, kSharedGroup) == 0 && setMode(file, 0660);
     },
     0660, false, true, true},
    {"no /proc", [](auto&, auto& file) { return setMode(file, 0640); }, 0640, true, false},
};

// An operation that replaces the file `target` in the folder.
struct Operation {
  const char* name;
  std::function<bool(const std::string& folder, const std::string& target)> run;
};

const Operation kOperations[] = {
    {"copy",
     [](auto& folder, auto&) {
       return FileSystem::CopyFileA((folder + "in/target").c_str(), folder.c_str(), 0) != 0;
     }},
    {"extract",
     [](auto& folder, auto& target) {
       ZipArchive archive;
       return archive.open((folder + "source.zip").c_str(), kRead) == 1 &&
              archive.extract("a", target.c_str()) == 1;
     }},
    {"remove",
     [](auto&, auto& target) {
       ZipArchive archive;
       return archive.open(target.c_str(), kReadWrite) == 1 && archive.remove("a") == 1;
     }},
    {"pack", [](auto& folder,
                auto& target) { return FRT_ZIP_FOLDER((folder + "in").c_str(), target.c_str()); }},
};

void PrintTo(const Target& target, std::ostream* out) { *out << target.what; }
void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }

// Reports whether all but this user can do with one file at most what they can do with another.
bool isWithin(const Access& access, const Access& limit) {
  const std::string self = "user " + std::to_string(geteuid());
  for (const auto& [who, rights] : access) {
    if (who == self) continue;
    const auto allowed = limit.find(who);
    const int most = allowed != limit.end() ? allowed->second : limit.at("others");
    if ((rights & ~most) != 0) return false;
  }
  return true;
}

using Case = std::tuple<Target, Operation>;

class Replacing : public Zip, public testing::WithParamInterface<Case> {
 protected:
  Replacing() {
    make({"a", "b"});
    std::filesystem::copy(path_, folder_.file("source.zip"));
    std::filesystem::rename(path_, target_);
    write("in/target", "new");
    chmod(folder_.path().c_str(), 0777);
  }

  // Runs the operation in a process of its own.
  bool run() const {
    const Target& target = std::get<Target>(GetParam());
    support::ForkedProcess process([&](const auto&) {
      if (!target.hasProc && (unshare(CLONE_NEWNS) != 0 ||
                              mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
                              mount("none", "/proc", "tmpfs", 0, nullptr) != 0)) {
        return 2;
      }
      if (!target.isCallersOwn && !becomeCaller()) return 2;
      return std::get<Operation>(GetParam()).run(folder_.path().string() + '/', target_) ? 0 : 1;
    });
    return process.wait() == 0;
  }

  struct stat status() const {
    struct stat status {};
    stat(target_.c_str(), &status);
    return status;
  }

  Access access() const {
    const int file = open(target_.c_str(), O_RDONLY | O_CLOEXEC);
    Access access = support::accessTo(file);
    close(file);
    return access;
  }

  // Inspects the files in the folder that are new, with a name or only open. Returns their number.
  int inspect(const Access& limit) {
    int found = 0;
    for (const auto& [number, path] : support::openDescriptors()) {
      struct stat status {};
      const bool isInFolder = path.starts_with(folder_.path().string() + "/.~copy") ||
                              path.starts_with(folder_.path().string() + "/#");
      if (!isInFolder || fstat(number, &status) != 0 || !S_ISREG(status.st_mode)) continue;
      ++found;
      EXPECT_TRUE(isWithin(support::accessTo(number), limit))
          << std::oct << (status.st_mode & 07777) << ' ' << path;
    }
    return found;
  }

  std::string attribute(const char* name) const {
    char value[64];
    const ssize_t size = getxattr(target_.c_str(), name, value, sizeof(value));
    return std::string(value, size > 0 ? static_cast<std::size_t>(size) : 0);
  }

  std::string target_ = folder_.file("target");
};

TEST_P(Replacing, KeepsAccessButNoPrivileges) {
  const Target& target = std::get<Target>(GetParam());
  if (geteuid() != 0) GTEST_SKIP() << "needs the superuser";
  if (!target.prepare(folder_.path(), target_)) GTEST_SKIP() << "not on this file system";
  const auto accessBefore = access();
  const struct stat before = status();
  const std::string note = attribute("user.note");
  ASSERT_TRUE(run());
  EXPECT_EQ(access(), accessBefore);
  EXPECT_EQ(status().st_mode & 07777, target.mode);
  EXPECT_EQ(status().st_uid, before.st_uid);
  EXPECT_EQ(status().st_gid, before.st_gid);
  EXPECT_EQ(status().st_ino == before.st_ino, target.staysSameFile);
  EXPECT_EQ(attribute("user.note"), note);
  EXPECT_EQ(attribute("security.capability"), "");
  EXPECT_EQ(folder_.entries(), 3U);
}

// The version is inspected before each system call.
TEST_P(Replacing, IsAtNoInstantOpenToMore) {
  const auto& [target, operation] = GetParam();
  if (!target.isCallersOwn || !target.hasProc) GTEST_SKIP() << "in another process";
  const std::string folder = folder_.path();
  for (const bool inherits : {false, true}) {
    SCOPED_TRACE(inherits ? "default list" : "no default list");
    std::filesystem::copy(folder_.file("source.zip"), target_,
                          std::filesystem::copy_options::overwrite_existing);
    if (inherits) support::setList(folder, support::kDefaultList, support::listFor(kGuest, 6, 6));
    if (!target.prepare(folder, target_)) GTEST_SKIP() << "not on this file system";
    const Access limit = access();
    int found = 0;
    const failing::Failing watcher(failing::Fault::Interruption, 1,
                                   [&] { found += inspect(limit); });
    EXPECT_TRUE(operation.run(folder + '/', target_));
    EXPECT_GT(found, 5);
  }
}

// The version could inherit the folder's list where a call fails that takes it away.
TEST_P(Replacing, IsOpenToNoMoreAfterACallHasFailed) {
  const auto& [target, operation] = GetParam();
  if (!target.isCallersOwn || !target.hasProc) GTEST_SKIP() << "in another process";
  const std::string folder = folder_.path();
  // For what cannot be deleted. It is made before it could inherit a list that locks an owner out.
  const std::string leftOver = folder_.file("left-over");
  std::filesystem::create_directory(leftOver);
  const support::TemporaryVariable temporary(leftOver);
  support::setList(folder, support::kDefaultList, support::listFor(kGuest, 6, 6));
  std::string failed = "none yet";
  for (int number = 1; !failed.empty(); ++number) {
    std::filesystem::copy(folder_.file("source.zip"), target_,
                          std::filesystem::copy_options::overwrite_existing);
    if (!target.prepare(folder, target_)) GTEST_SKIP() << "not on this file system";
    const Access limit = access();
    {
      const failing::Failing failing(failing::Fault::OneCall, number);
      operation.run(folder + '/', target_);
      failed = failing.failed();
    }
    EXPECT_TRUE(isWithin(access(), limit)) << number << ' ' << failed;
  }
}

INSTANTIATE_TEST_SUITE_P(All, Replacing,
                         testing::Combine(testing::ValuesIn(kTargets),
                                          testing::ValuesIn(kOperations)));

// A network file system may return zeros for content that it has not stored.
TEST_F(Zip, OnlyWhatIsStoredIsWrittenOverAColleaguesFile) {
  if (geteuid() != 0) GTEST_SKIP() << "needs the superuser";
  make({"a"});
  const std::string target = folder_.file("target");
  support::writeFile(target, "old");
  if (!setMode(target, 0660)) GTEST_SKIP() << "not on this file system";
  ASSERT_EQ(chown(target.c_str(), kColleague, kSharedGroup), 0);
  chmod(path_.c_str(), 0644);
  chmod(folder_.path().c_str(), 0777);
  support::ForkedProcess process([&](const auto&) {
    if (!becomeCaller()) return 2;
    std::string failed;
    bool isExtracted = true;
    for (int number = 1; failed != "fdatasync "; ++number) {
      support::writeFile(target, "old");
      ZipArchive archive;
      archive.open(path_.c_str(), kRead);
      const failing::Failing failing(failing::Fault::OneCall, number);
      isExtracted = archive.extract("a", target.c_str()) == 1;
      failed = failing.failed();
      if (failed.empty()) return 3;
    }
    return isExtracted ? 1 : 0;
  });
  EXPECT_EQ(process.wait(), 0);
  EXPECT_EQ(support::readFile(target), "old");
}

}  // namespace
