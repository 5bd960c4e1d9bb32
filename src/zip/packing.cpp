#include "zip/packing.h"

#include <filesystem/path.h>

#include <utility>

#include "enumeration/folder_walk.h"
#include "files/source_file.h"
#include "path/fixed_text.h"
#include "platform/colon_names.h"
#include "platform/file_identity.h"
#include "reporting/reasons.h"
#include "zip/entry_adder.h"
#include "zip/entry_names.h"

namespace zip {

using FileSystem::Options;
using FileSystem::Reason;
using FileSystem::Report;
using FileSystem::Detail::ProgressRelay;

namespace {

using FileSystem::Detail::FolderWalk;
using FileSystem::Detail::PathText;
using FileSystem::Detail::Search;

bool isSameFile(const char* a, const char* b) {
  platform::FileIdentity first;
  platform::FileIdentity second;
  return platform::fileIdentity(a, first) && platform::fileIdentity(b, second) && first == second;
}

// Checks each file of a tree before any of them is packed.
class Check {
 public:
  Check(const std::string& base, const std::string& archive, const Options& options,
        ProgressRelay& progress, Report& report)
      : base_(base),
        archive_(archive),
        progress_(progress),
        report_(report),
        keepsLinks_(options.links()),
        keepsFolders_(options.folders()),
        walk_(base, true, true, !options.links()) {}

  void run() {
    if (keepsFolders_) files_.folders.push_back(base_);
    walk_.run([this](const WIN32_FIND_DATAA&) { return checkFolder(); },
              [this](const Search& search) { checkFile(search); },
              [this](const Search& search) { checkEnd(search); });
  }

  PackableFiles takeFiles() { return std::move(files_); }

 private:
  bool checkFolder() {
    const std::string path = walk_.path() + '\\';
    // The walk reports a folder whose path is too long.
    if (keepsFolders_ && path.size() <= PathText::kLongest && canBeNamed(path, true)) {
      files_.folders.push_back(path);
    }
    return !progress_.isCancelled();
  }

  // False, with the failure reported, if no entry can have the name.
  bool canBeNamed(const std::string& path, bool isFolder = false) {
    if (storedPath(FileSystem::subPath(base_, path)).size() <= kLongestName) return true;
    fail(path, Reason::NameTooLong, isFolder);
    return false;
  }

  void checkFile(const Search& search) {
    // Listing a large tree takes long. The host can cancel it, too.
    constexpr int kInterval = 1000;
    name_ = search.entry().cFileName;
    if (++count_ % kInterval == 0) progress_.begin(name_);
    if (progress_.isCancelled()) return;
    std::string path = walk_.path() + name_;
    if (path.size() > PathText::kLongest) return fail(path, Reason::PathTooLong);
    if (keepsLinks_ && search.isLink()) {
      if (canBeNamed(path)) files_.links.push_back(std::move(path));
      return;
    }
    if (!search.canOpen(path.c_str())) return checkUnopened(path);
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data) == 0) {
      return fail(path, FileSystem::Detail::reasonOfError(GetLastError(), Reason::ReadFailed));
    }
    const std::uint64_t size = std::uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow;
    if (!canBeNamed(path)) return;
    files_.bytes += size;
    files_.paths.push_back(std::move(path));
  }

  void checkUnopened(const std::string& path) {
    if (platform::isNoFile(path.c_str())) {
      addItem(path, Reason::NotAFile);
    } else if (!isSameFile(path.c_str(), archive_.c_str())) {
      const Reason reason = FileSystem::Detail::reasonForSource(path.c_str());
      // Another program has released it meanwhile.
      fail(path, reason == Reason::None ? Reason::InUse : reason);
    }
  }

  void checkEnd(const Search& search) {
    if (!search.isComplete()) fail(walk_.path(), walk_.failure(search), true);
    for (const std::string& name : search.unlistedNames()) {
      fail(walk_.path() + name, Reason::PathTooLong);
    }
  }

  void addItem(const std::string& path, Reason reason, bool isFolder = false) {
    report_.items.push_back({path.substr(base_.size()), reason, {}, isFolder});
  }

  void fail(const std::string& path, Reason reason, bool isFolder = false) {
    addItem(path, reason, isFolder);
    if (report_.reason == Reason::None) report_.reason = reason;
  }

  const std::string& base_;
  const std::string& archive_;
  ProgressRelay& progress_;
  Report& report_;
  const bool keepsLinks_;
  const bool keepsFolders_;
  FolderWalk walk_;
  PackableFiles files_;
  std::string name_;
  int count_ = 0;
};

}  // namespace

std::string storedPath(const std::string& path) {
  return storedName(platform::isDriveOrStream(path) ? ".\\" + path : path);
}

PackableFiles packableFiles(const std::string& base, const std::string& archive,
                            const Options& options, ProgressRelay& progress, Report& report) {
  Check check(base, archive, options, progress, report);
  check.run();
  if (progress.isCancelled()) report.reason = Reason::Cancelled;
  return check.takeFiles();
}

}  // namespace zip
