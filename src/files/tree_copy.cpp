#include "files/tree_copy.h"

#include <algorithm>
#include <boost/format.hpp>
#include <string_view>
#include <utility>

#include "enumeration/folder_walk.h"
#include "files/copy_target.h"
#include "files/folder_failure.h"

namespace FileSystem::Detail {
namespace {

using platform::FileIdentity;
using platform::GatheredCopies;
using platform::OpenDirectory;
using platform::WrittenFiles;

// Directories further down are opened by the rest of their path, which needs no more descriptors.
constexpr std::size_t kOpenLevels = 8;

constexpr WrittenFiles::Name kCreated = 1;

std::string withoutEnd(const std::string& name) {
  return name.substr(0, name.find_last_not_of('\\') + 1);
}

}  // namespace

TreeCopy::TreeCopy(std::string source, std::string target, TreeCall& call)
    : source_(std::move(source)),
      target_(std::move(target)),
      call_(call),
      gathered_([this](const GatheredCopies::End& end) { endWaiting(end); }) {
  if (call_.reports()) progress_ = [this](std::uint64_t done) { return call_.moveTo(done); };
}

void TreeCopy::count() {
  std::uint64_t files = 0;
  std::uint64_t bytes = 0;
  FolderWalk walk(source_, true);
  const auto visit = [&](const WIN32_FIND_DATAA&) {
    return call_.begin(std::string(walk.relativePath()));
  };
  const auto add = [&](const Search& search) {
    const WIN32_FIND_DATAA& entry = search.entry();
    ++files;
    bytes += std::uint64_t{entry.nFileSizeHigh} << 32 | entry.nFileSizeLow;
  };
  walk.run(visit, add);
  call_.expect(files, bytes);
}

void TreeCopy::run(const std::vector<std::string>& created) {
  FileIdentity folder;
  for (const std::string& path : created) {
    if (platform::fileIdentity(path.c_str(), folder)) created_.add(folder, kCreated);
  }
  copyAll();
  gathered_.finish();
}

void TreeCopy::copyAll() {
  enterSource();
  while (!levels_.empty() && !call_.isCancelled()) {
    std::vector<Subfolder>& pending = levels_.back().pending;
    if (pending.empty()) {
      levels_.pop_back();
      continue;
    }
    const Subfolder next = std::move(pending.back());
    pending.pop_back();
    enter(next);
  }
  if (call_.isCancelled()) return;
  // The source may be in the target, and its files some of those that wait.
  gathered_.finish();
  Folder whole{.name = {}, .from = OpenDirectory(source_, OpenDirectory::LastLink::Followed)};
  copyFiles(whole, nullptr);
}

void TreeCopy::enterSource() {
  Level level{.name = {}, .identity = {}, .pending = listTop()};
  // An empty path and a drive alone name the current directory, and so does the dot after them.
  platform::fileIdentity((source_ + '.').c_str(), level.identity);
  level.from.emplace(source_, OpenDirectory::LastLink::Followed);
  level.to.emplace(target_, OpenDirectory::LastLink::Followed);
  level.to->identity(targetFolder_);
  levels_.push_back(std::move(level));
}

// Searches by a pattern, because the source may be the beginning of a name.
std::vector<TreeCopy::Subfolder> TreeCopy::listTop() {
  std::vector<Subfolder> folders;
  Search search(source_ + '*', FindExSearchLimitToDirectories, true);
  while (search.next()) {
    const WIN32_FIND_DATAA& entry = search.entry();
    const std::string_view name = entry.cFileName;
    if (!search.isFolder() || name == "." || name == "..") continue;
    const bool isLink = (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    folders.push_back({.name = std::string(name), .isLink = isLink});
  }
  isTopListed_ = search.isComplete();
  std::reverse(folders.begin(), folders.end());
  return folders;
}

TreeCopy::Listing TreeCopy::list(OpenDirectory& directory) {
  Listing listing;
  while (directory.next()) {
    std::string shown = directory.name();
    const bool isDirectory = directory.isDirectory();
    if (isDirectory && shown.empty()) {
      listing.unnamed.push_back(directory.storedName());
    } else if (isDirectory || (!shown.empty() && directory.leadsToDirectory())) {
      listing.folders.push_back({.name = std::move(shown), .isLink = !isDirectory});
    } else {
      listing.files.push_back({.stored = directory.storedName(),
                               .shown = std::move(shown),
                               .isRegular = directory.isRegular()});
    }
  }
  return listing;
}

// Passes over what the copy itself has created, and over links to the folders that it is in.
bool TreeCopy::isPassedOver(const FileIdentity& folder, bool isLink) const {
  const auto isFolder = [&](const Level& level) { return level.identity == folder; };
  return created_.nameOf(folder) != WrittenFiles::kNone ||
         (isLink && std::any_of(levels_.begin(), levels_.end(), isFolder));
}

// A directory that another process replaces by a link after it was listed is not followed.
void TreeCopy::enter(const Subfolder& subfolder) {
  using LastLink = OpenDirectory::LastLink;
  const Level& above = levels_[std::min(levels_.size(), kOpenLevels) - 1];
  const std::string name = levels_.back().name + subfolder.name + '\\';
  const LastLink link = subfolder.isLink ? LastLink::Followed : LastLink::Refused;
  Folder folder{.name = name, .from = OpenDirectory(source_ + name, link, &*above.from)};
  Level level{.name = name, .identity = {}, .pending = {}};
  const bool isKnown = folder.from.identity(level.identity);
  if (isKnown && isPassedOver(level.identity, subfolder.isLink)) return;
  // A link to an unknown folder could lead back without end.
  if (folder.from && !isKnown && subfolder.isLink) {
    call_.failFolder(withoutEnd(name), Reason::ReadFailed);
    return;
  }
  isInTarget_ = isInTarget_ || level.identity == targetFolder_;
  // What waits may be among the files that are read next.
  if (isInTarget_) gathered_.finish();
  level.pending = copyFiles(folder, &*above.to);
  std::reverse(level.pending.begin(), level.pending.end());
  if (levels_.size() < kOpenLevels) {
    level.from.emplace(std::move(folder.from));
    level.to.emplace(std::move(*folder.to));
  }
  levels_.push_back(std::move(level));
}

// Copies the files directly in a folder, and returns its subfolders. They are listed before the
// target is created, because the target may be in the source.
std::vector<TreeCopy::Subfolder> TreeCopy::copyFiles(Folder& folder, const OpenDirectory* above) {
  if (!folder.from) {
    const DWORD error = GetLastError();
    call_.failFolder(withoutEnd(folder.name), folderFailure(source_ + folder.name, error));
  }
  Listing listing = list(folder.from);
  const bool isListed = folder.from.isComplete() && (!folder.name.empty() || isTopListed_);
  if (folder.from && !isListed) call_.failFolder(withoutEnd(folder.name), Reason::ReadFailed);
  for (const std::string& unnamed : listing.unnamed) {
    call_.failFolder(folder.name + unnamed, Reason::Failed);
  }
  makeTarget(folder, above);
  for (const File& file : listing.files) {
    if (call_.isCancelled()) break;
    copyFile(folder, file);
  }
  return std::move(listing.folders);
}

void TreeCopy::makeTarget(Folder& folder, const OpenDirectory* above) {
  folder.to.emplace(OpenDirectory::make(target_ + folder.name, above));
  folder.targetError = *folder.to ? ERROR_SUCCESS : GetLastError();
  FileIdentity own;
  if (folder.to->isNew() && folder.to->identity(own)) created_.add(own, kCreated);
  if (!*folder.to) {
    call_.failFolder(withoutEnd(folder.name),
                     folderFailure(target_ + folder.name, folder.targetError));
  }
}

void TreeCopy::copyFile(Folder& folder, const File& file) {
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
Reason TreeCopy::copyTo(Folder& folder, const File& file, std::uint64_t& other) {
  DWORD error = tryToCopy(folder, file, other);
  if (gathered_.mayCause(error)) {
    gathered_.finish();
    error = tryToCopy(folder, file, other);
  }
  if (error == ERROR_SUCCESS) return Reason::None;
  if (other != WrittenFiles::kNone) return Reason::SameFile;
  const bool isBlocked = error == ERROR_FILE_EXISTS && file.shown.empty();
  return isBlocked ? Reason::Failed : failure(folder, file, error);
}

// The name is taken for a free one, which needs no check, unless that of the file before was in use.
DWORD TreeCopy::tryToCopy(Folder& folder, const File& file, std::uint64_t& other) {
  OpenDirectory& to = *folder.to;
  OpenDirectory::Named named;
  if (folder.hasExisting) named = to.find(file.stored);
  folder.hasExisting = named.exists;
  if (file.isRegular && to && !named.exists) {
    if (to.copyNew(folder.from, file.stored, written_, call_.id(), progress_)) {
      return ERROR_SUCCESS;
    }
    // After another error the second way would only fail again.
    const DWORD error = GetLastError();
    if (error != ERROR_FILE_EXISTS) return error;
  }
  if (!named.exists) named = to.find(file.stored);
  folder.hasExisting = named.exists;
  if (file.shown.empty()) return ERROR_FILE_EXISTS;
  other = writtenAs(named);
  return other == WrittenFiles::kNone ? copyOver(folder, file) : DWORD{ERROR_FILE_EXISTS};
}

// Returns the id of the file of this call that has the name, or will be replaced there.
std::uint64_t TreeCopy::writtenAs(const OpenDirectory::Named& named) const {
  if (!named.file) return WrittenFiles::kNone;
  const std::uint64_t other = written_.nameOf(*named.file);
  return other != WrittenFiles::kNone ? other : gathered_.targets().nameOf(*named.file);
}

DWORD TreeCopy::copyOver(Folder& folder, const File& file) {
  using Outcome = GatheredCopies::Outcome;
  boost::format path("%s%s%s");
  const std::string from = str(path % source_ % folder.name % file.shown);
  const std::string target = str(path % target_ % folder.name % file.shown);
  const bool keeps = call_.existing() == ExistingFiles::Keep;
  const Outcome outcome =
      gathered_.copy(from.c_str(), target.c_str(), keeps, progress_, call_.id());
  if (outcome == Outcome::Failed) return GetLastError();
  if (outcome == Outcome::Copied) folder.to->addWritten(file.stored, written_, call_.id());
  return ERROR_SUCCESS;
}

void TreeCopy::endWaiting(const GatheredCopies::End& end) {
  if (end.error == ERROR_SUCCESS) {
    written_.add(end.file, end.id);
  } else if (call_.reports()) {
    call_.fail(end.id, copyFailure(end.from.c_str(), end.to.c_str(), true, end.error));
  } else {
    call_.fail(end.id, Reason::Failed);
  }
}

Reason TreeCopy::failure(const Folder& folder, const File& file, DWORD error) const {
  if (!call_.reports()) return Reason::Failed;
  if (!*folder.to) return folderFailure(target_ + folder.name, folder.targetError);
  const std::string name = folder.name + file.shown;
  return copyFailure((source_ + name).c_str(), (target_ + name).c_str(), file.isRegular, error);
}

}  // namespace FileSystem::Detail
