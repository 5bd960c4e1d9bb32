// Who can read a new version before it takes the place of the old one.

#include <fcntl.h>
#include <filesystem/files.h>
#include <filesystem/zip.h>
#include <filesystem/zip_archive.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <map>
#include <string>

#include "failing_calls.h"
#include "support/linux/access_list.h"
#include "support/linux/left_over.h"
#include "support/temporary_folder.h"

namespace {

using Access = std::map<std::string, int>;

Access accessToFile(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  const Access access = support::accessTo(file);
  close(file);
  return access;
}

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

class ReplacementAccess : public testing::Test {
 protected:
  ReplacementAccess() {
    support::writeFile(folder_.file("in/target"), "new");
    ZipArchive archive;
    archive.create(target_.c_str(), 0);
    archive.insert({'a'}, "a", "", 0);
    archive.insert({'b'}, "b", "", 0);
    archive.close();
    std::filesystem::copy(target_, folder_.file("source.zip"));
    std::filesystem::copy(target_, folder_.file("model"));
  }

  // Inspects the files in the folder that are new, with a name or only open. Returns their number.
  int inspect(const Access& limit) {
    int found = 0;
    for (const auto& [number, path] : support::openDescriptors()) {
      struct stat status {};
      const bool isInFolder = path.rfind(folder_.path().string() + "/.~copy", 0) == 0 ||
                              path.rfind(folder_.path().string() + "/#", 0) == 0;
      if (!isInFolder || fstat(number, &status) != 0 || !S_ISREG(status.st_mode)) continue;
      ++found;
      EXPECT_TRUE(isWithin(support::accessTo(number), limit))
          << std::oct << (status.st_mode & 07777) << ' ' << path;
    }
    return found;
  }

  support::TemporaryFolder folder_;
  std::string target_ = folder_.file("target");
};

// The version is inspected before each system call.
TEST_F(ReplacementAccess, IsAtNoInstantWiderThanThatToTheTarget) {
  constexpr uid_t kGuest = 1003;
  const std::map<std::string, std::function<bool()>> operations{
      {"copy",
       [&] {
         return FileSystem::CopyFileA(folder_.file("in/target").c_str(), folder_.text().c_str(),
                                      0) != 0;
       }},
      {"extract",
       [&] {
         ZipArchive archive;
         return archive.open(folder_.file("source.zip").c_str(), 0x80000000) == 1 &&
                archive.extract("a", target_.c_str()) == 1;
       }},
      {"remove",
       [&] {
         ZipArchive archive;
         return archive.open(target_.c_str(), 0xC0000000) == 1 && archive.remove("a") == 1;
       }},
      {"pack", [&] { return FRT_ZIP_FOLDER(folder_.file("in").c_str(), target_.c_str()); }},
  };
  const std::map<std::string, std::function<bool()>> targets{
      {"0600", [&] { return chmod(target_.c_str(), 0600) == 0; }},
      {"0640", [&] { return chmod(target_.c_str(), 0640) == 0; }},
      {"list",
       [&] {
         return support::setList(target_, support::kAccessList, support::listFor(kGuest, 0, 0));
       }},
      {"other owner",
       [&] {
         return chown(target_.c_str(), kGuest, kGuest) == 0 && chmod(target_.c_str(), 0440) == 0 &&
                chmod(target_.c_str(), 0620) == 0;
       }},
  };
  for (const bool hasDefaultList : {false, true}) {
    if (hasDefaultList && !support::setList(folder_.path().string(), support::kDefaultList,
                                            support::listFor(kGuest, 6, 6))) {
      continue;
    }
    for (const auto& [what, prepare] : targets) {
      for (const auto& [name, run] : operations) {
        SCOPED_TRACE(name + ", " + what + (hasDefaultList ? ", default list" : ""));
        std::filesystem::remove(target_);
        std::filesystem::copy(folder_.file("model"), target_);
        if (!prepare()) continue;
        const Access limit = accessToFile(target_);
        int found = 0;
        const failing::Failing watcher(failing::Fault::Interruption, 1,
                                       [&] { found += inspect(limit); });
        EXPECT_TRUE(run());
        EXPECT_GT(found, 5);
      }
    }
  }
}

}  // namespace
