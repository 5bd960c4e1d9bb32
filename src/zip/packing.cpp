#include "zip/packing.h"

#include <filesystem/path.h>

#include <string_view>

#include "enumeration/folder_walk.h"
#include "path/fixed_text.h"
#include "platform/file_identity.h"
#include "zip/entry_names.h"
#include "zip/insertion.h"

namespace zip {
namespace {

using FileSystem::Detail::FolderWalk;
using FileSystem::Detail::PathText;
using FileSystem::Detail::Search;
using Reason = PackReport::Reason;

bool isSameFile(const char* a, const char* b) {
  platform::FileIdentity first;
  platform::FileIdentity second;
  return platform::fileIdentity(a, first) && platform::fileIdentity(b, second) && first == second;
}

// Checks each file of a tree before any of them is packed.
class Check {
 public:
  Check(const std::string& base, const std::string& archive, PackReport& report)
      : base_(base), archive_(archive), report_(report), walk_(base, true, true) {}

  void run() {
    walk_.run([](const WIN32_FIND_DATAA&) { return true; },
              [this](const Search& search) { checkFile(search); },
              [this](const Search& search) { checkEnd(search); });
  }

  bool succeeded() const { return succeeded_; }
  std::vector<std::string> takeFiles() { return std::move(files_); }

 private:
  void checkFile(const Search& search) {
    std::string path = walk_.path() + search.entry().cFileName;
    if (path.size() > PathText::kLongest) return fail(path, Reason::PathTooLong);
    if (!search.canOpen(path.c_str())) return checkUnopened(path);
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data) == 0) {
      return fail(path, Reason::Unreadable);
    }
    const std::uint64_t size = std::uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow;
    if (size >= kTooManyBytes) return fail(path, Reason::TooLarge);
    if (storedName(FileSystem::subPath(base_, path)).size() > kLongestName) {
      return fail(path, Reason::NameTooLong);
    }
    files_.push_back(std::move(path));
  }

  void checkUnopened(const std::string& path) {
    if (platform::isNoFile(path.c_str())) {
      report_.files.push_back({path, Reason::NotAFile});
    } else if (!isSameFile(path.c_str(), archive_.c_str())) {
      fail(path, Reason::Unreadable);
    }
  }

  void checkEnd(const Search& search) {
    if (!search.isComplete()) fail(walk_.path(), reasonForFolder());
    for (const std::string& name : search.unlistedNames()) {
      fail(walk_.path() + name, Reason::PathTooLong);
    }
  }

  Reason reasonForFolder() const {
    return walk_.path().size() > PathText::kLongest ? Reason::PathTooLong : Reason::Unreadable;
  }

  void fail(const std::string& path, Reason reason) {
    report_.files.push_back({path, reason});
    succeeded_ = false;
  }

  const std::string& base_;
  const std::string& archive_;
  PackReport& report_;
  FolderWalk walk_;
  std::vector<std::string> files_;
  bool succeeded_ = true;
};

}  // namespace

std::optional<std::vector<std::string>> packableFiles(const std::string& base,
                                                      const std::string& archive,
                                                      PackReport& report) {
  Check check(base, archive, report);
  check.run();
  if (!check.succeeded()) return std::nullopt;
  return check.takeFiles();
}

}  // namespace zip
