// Copies of the content of a folder.

#include <filesystem/files.h>
#include <filesystem/trees.h>

#include <boost/format.hpp>
#include <string>
#include <unordered_set>
#include <vector>

#include "enumeration/folder_walk.h"
#include "files/attributes.h"
#include "files/copy_target.h"
#include "files/folder_failure.h"
#include "files/make_folders.h"
#include "files/tree_call.h"
#include "path/fixed_text.h"
#include "path/with_backslash.h"
#include "path/zero_terminated.h"
#include "platform/copy_file.h"
#include "platform/open_directory.h"
#include "platform/win32.h"
#include "platform/written_files.h"

namespace FileSystem {
namespace {

using platform::OpenDirectory;
using platform::WrittenFiles;

struct FileName {
  std::string stored;
  std::string shown;  // empty if no path can name the file
  bool isRegular;
};

// The entries of a folder.
struct Listing {
  std::vector<FileName> files;       // all but directories
  std::vector<std::string> unnamed;  // stored names of directories that no path can name
};

Listing list(OpenDirectory& directory) {
  Listing listing;
  while (directory.next()) {
    std::string shown = directory.name();
    if (!directory.isDirectory()) {
      listing.files.push_back({directory.storedName(), std::move(shown), directory.isRegular()});
    } else if (shown.empty()) {
      listing.unnamed.push_back(directory.storedName());
    }
  }
  return listing;
}

// Creates a folder and, unlike EnsurePathExists, neither its parents nor another name than that.
bool makeFolder(std::string path) {
  path.erase(path.find_last_not_of("\\/") + 1);
  return Detail::makeFolder(path.c_str());
}

class TreeCopy {
 public:
  // Both paths end in a separator, or what follows is joined to a name.
  TreeCopy(std::string source, std::string target, Detail::TreeCall& call)
      : source_(std::move(source)), target_(std::move(target)), call_(call) {}

  // Lists the folders, and with progress also counts the files.
  void listFolders();
  // Copies what listFolders() has found. The target exists.
  void run();

 private:
  struct Folder {
    std::string name;  // below the source, with separator; empty for the source itself
    OpenDirectory& from;
    OpenDirectory& to;
    DWORD targetError;
  };

  void copyFolder(const std::string& name);
  void copyFile(const Folder& folder, const FileName& file);
  Reason copyTo(const Folder& folder, const FileName& file, std::uint64_t& other);
  Reason failure(const Folder& folder, const FileName& file, DWORD error) const;

  const std::string source_;
  const std::string target_;
  Detail::TreeCall& call_;
  std::vector<std::string> folders_;
  std::unordered_set<std::string> unread_;  // folders whose subfolders are not all known
  WrittenFiles written_;
  platform::CopyProgress progress_;
};

void TreeCopy::listFolders() {
  std::uint64_t files = 0;
  std::uint64_t bytes = 0;
  Detail::FolderWalk walk(source_, true, !call_.hasProgress());
  const auto visit = [&](const WIN32_FIND_DATAA&) {
    folders_.emplace_back(walk.relativePath());
    return call_.begin(folders_.back());
  };
  const auto count = [&](const Detail::Search& search) {
    const WIN32_FIND_DATAA& entry = search.entry();
    ++files;
    bytes += std::uint64_t{entry.nFileSizeHigh} << 32 | entry.nFileSizeLow;
  };
  const auto end = [&](const Detail::Search& search) {
    if (!search.isComplete()) unread_.emplace(walk.relativePath());
  };
  if (call_.hasProgress()) {
    walk.run(visit, count, end);
    call_.expect(files, bytes);
  } else {
    walk.runFolders(visit, end);
  }
}

void TreeCopy::run() {
  if (call_.reports()) progress_ = [this](std::uint64_t done) { return call_.moveTo(done); };
  for (const std::string& folder : folders_) {
    if (call_.isCancelled()) return;
    copyFolder(folder + '\\');
  }
  if (!call_.isCancelled()) copyFolder({});
}

// Copies the files directly in a folder. They are listed before the target is created, because the
// target may be in the source.
void TreeCopy::copyFolder(const std::string& name) {
  const std::string ownName = name.substr(0, name.find_last_not_of('\\') + 1);
  OpenDirectory from(source_ + name, OpenDirectory::LastLink::Followed);
  if (!from) {
    const DWORD error = GetLastError();
    call_.failFolder(ownName, Detail::folderFailure(source_ + name, error));
  }
  const Listing listing = list(from);
  if (from && (!from.isComplete() || unread_.count(name) != 0)) {
    call_.failFolder(ownName, Reason::ReadFailed);
  }
  for (const std::string& unnamed : listing.unnamed) {
    call_.failFolder(name + unnamed, Reason::Failed);
  }
  const bool isMade = makeFolder(target_ + name);
  DWORD targetError = isMade ? ERROR_SUCCESS : GetLastError();
  OpenDirectory to(target_ + name, OpenDirectory::LastLink::Followed);
  if (!to && isMade) targetError = GetLastError();
  if (!to) {
    call_.failFolder(ownName, Detail::folderFailure(target_ + name, targetError));
  }
  const Folder folder{.name = name, .from = from, .to = to, .targetError = targetError};
  for (const FileName& file : listing.files) {
    if (call_.isCancelled()) return;
    copyFile(folder, file);
  }
}

void TreeCopy::copyFile(const Folder& folder, const FileName& file) {
  // A link to a folder was copied as one.
  if (!file.isRegular && !file.shown.empty() &&
      Detail::isDirectory((source_ + folder.name + file.shown).c_str())) {
    return;
  }
  if (call_.reports() &&
      !call_.begin(folder.name + (file.shown.empty() ? file.stored : file.shown))) {
    return;
  }
  std::uint64_t other = WrittenFiles::kNone;
  const Reason reason = copyTo(folder, file, other);
  call_.end(reason, other);
}

// Copies a file, whatever has its name in the target. A file whose name is that of an earlier one
// in the target, because the file system there takes both names for one, is not copied.
Reason TreeCopy::copyTo(const Folder& folder, const FileName& file, std::uint64_t& other) {
  if (file.isRegular && folder.to) {
    if (folder.to.copyNew(folder.from, file.stored, written_, call_.id(), progress_)) {
      return Reason::None;
    }
    // After another error the second way would only fail again.
    const DWORD error = GetLastError();
    if (error != ERROR_FILE_EXISTS) return failure(folder, file, error);
  }
  if (file.shown.empty()) return Reason::Failed;
  other = folder.to.writtenAs(file.stored, written_);
  if (other != WrittenFiles::kNone) return Reason::SameFile;
  boost::format path("%s%s%s");
  const std::string from = str(path % source_ % folder.name % file.shown);
  const std::string target = str(path % target_ % folder.name % file.shown);
  const bool keeps = call_.existing() == ExistingFiles::Keep;
  if (!platform::copyFile(from.c_str(), target.c_str(), keeps, progress_)) {
    return failure(folder, file, GetLastError());
  }
  folder.to.addWritten(file.stored, written_, call_.id());
  return Reason::None;
}

Reason TreeCopy::failure(const Folder& folder, const FileName& file, DWORD error) const {
  if (!call_.reports()) return Reason::Failed;
  if (!folder.to) return Detail::folderFailure(target_ + folder.name, folder.targetError);
  const std::string name = folder.name + file.shown;
  return Detail::copyFailure((source_ + name).c_str(), (target_ + name).c_str(), file.isRegular,
                             error);
}

// Reports whether a folder can be listed.
Reason checkSource(const std::string& path) {
  const OpenDirectory folder(path, OpenDirectory::LastLink::Followed);
  return folder ? Reason::None : Detail::folderFailure(path, GetLastError());
}

}  // namespace

long CopyContent(const std::string& sourceText, const std::string& targetText) {
  constexpr long kNoTarget = -4;
  const std::string target(Detail::upToZero(targetText));
  Detail::TreeCall call;
  TreeCopy copy(std::string(Detail::upToZero(sourceText)), target, call);
  copy.listFolders();
  if (target.size() >= Detail::kPathBuffer || EnsurePathExists(target.c_str()) == 0) {
    return kNoTarget;
  }
  copy.run();
  return static_cast<long>(call.done());
}

Report copyTree(const char* source, const char* target, const Options& options) {
  const std::string from = Detail::withBackslash(source);
  const std::string to = Detail::creatable(Detail::withBackslash(target));
  Detail::TreeCall call(options);
  Reason reason = *source == '\0' || *target == '\0' ? Reason::Missing : checkSource(from);
  if (reason != Reason::None) return call.finish(reason);
  TreeCopy copy(from, to, call);
  copy.listFolders();
  if (!call.isCancelled()) reason = Detail::prepareTarget(to);
  if (!call.isCancelled() && reason == Reason::None) copy.run();
  return call.finish(reason);
}

}  // namespace FileSystem
