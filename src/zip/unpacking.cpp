#include "zip/unpacking.h"

#include <algorithm>
#include <utility>

#include "path/zero_terminated.h"
#include "zip/entry_path.h"

namespace zip {

using FileSystem::Entry;
using FileSystem::ItemResult;
using FileSystem::Options;
using FileSystem::Reason;
using FileSystem::Detail::ProgressRelay;

namespace {

const char* passwordOf(const Options& options) {
  return options.password().empty() ? nullptr : options.password().c_str();
}

std::vector<std::size_t> indicesOf(const std::vector<Entry>& entries, EntryKind kind) {
  std::vector<std::size_t> indices;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (kindOf(entries[i]) == kind) indices.push_back(i);
  }
  return indices;
}

// Sorts folders so that each follows the one that it is in.
void sortByName(std::vector<std::size_t>& indices, const std::vector<Entry>& entries) {
  std::stable_sort(indices.begin(), indices.end(),
                   [&](std::size_t a, std::size_t b) { return entries[a].name < entries[b].name; });
}

}  // namespace

Unpacking::Unpacking(ArchiveReader& reader, const std::vector<Entry>& entries,
                     const std::string& base, bool isNew, const Options& options,
                     ProgressRelay& progress)
    : reader_(reader),
      entries_(entries),
      base_(base),
      isNew_(isNew),
      options_(options),
      kept_(keptBy(options)),
      progress_(progress),
      extractor_(reader, passwordOf(options), progress),
      isReached_(entries.size()) {
  items_.reserve(entries.size());
  for (std::size_t i = 0; i < entries.size(); ++i) {
    last_[entries[i].name] = i;
    items_.push_back({entries[i].name, Reason::None, {}, entries[i].isFolder});
  }
}

FileSystem::Report Unpacking::run() {
  FileSystem::Report report;
  report.reason = extractor_.beginFolder(base_, isNew_);
  if (report.reason != Reason::None) return report;
  std::vector<std::size_t> folders = indicesOf(entries_, EntryKind::Folder);
  sortByName(folders, entries_);
  runAll(folders, &Unpacking::createFolder);
  runAll(indicesOf(entries_, EntryKind::File), &Unpacking::writeFile);
  runAll(indicesOf(entries_, EntryKind::Special), &Unpacking::check);
  runAll(indicesOf(entries_, EntryKind::Link), &Unpacking::createLink);
  extractor_.finishFolders([&](std::size_t index, Reason reason) {
    if (items_[index].reason == Reason::None) items_[index].reason = reason;
  });
  for (std::size_t i = 0; i < items_.size(); ++i) {
    if (isReached_[i]) report.items.push_back(std::move(items_[i]));
  }
  if (progress_.isCancelled()) report.reason = Reason::Cancelled;
  return report;
}

// Until the call is cancelled.
void Unpacking::runAll(const std::vector<std::size_t>& indices, Step step) {
  for (const std::size_t index : indices) {
    if (progress_.isCancelled() || !progress_.begin(entries_[index].name)) return;
    isReached_[index] = true;
    items_[index].reason = (this->*step)(index);
    progress_.end();
  }
}

std::string Unpacking::targetOf(std::size_t index) const {
  return base_ + std::string(FileSystem::Detail::upToZero(entries_[index].name));
}

// Makes the entry the reader's current one, if there may be a file of its name.
Reason Unpacking::check(std::size_t index) {
  const Entry& entry = entries_[index];
  // Of the entries of a name, only the last one can be in the folder.
  if (last_.at(entry.name) != index) {
    items_[index].other = entry.name;
    return Reason::NameTaken;
  }
  if (kindOf(entry) == EntryKind::Special) return Reason::NotAFile;
  if (escapesFolder(FileSystem::Detail::upToZero(entry.name))) return Reason::NameEscapes;
  return reader_.moveTo(entry.position) ? Reason::None : Reason::Missing;
}

Reason Unpacking::createFolder(std::size_t index) {
  const Reason reason = check(index);
  if (reason != Reason::None) return reason;
  return extractor_.createFolder(targetOf(index), base_.size(), newMetadata(entries_[index], kept_),
                                 index);
}

Reason Unpacking::writeFile(std::size_t index) {
  const Reason reason = check(index);
  if (reason != Reason::None) return reason;
  // The numbers of names begin with 1, because 0 is that of none.
  return resultOf(extractor_.toFileIn(targetOf(index), base_.size(), options_.existing(), index + 1,
                                      newMetadata(entries_[index], kept_)),
                  index);
}

Reason Unpacking::createLink(std::size_t index) {
  const Reason reason = check(index);
  if (reason != Reason::None) return reason;
  if (!options_.links()) return Reason::IsALink;
  return resultOf(extractor_.toLinkIn(targetOf(index), base_.size(), options_.existing(), index + 1,
                                      newMetadata(entries_[index], kept_)),
                  index);
}

Reason Unpacking::resultOf(const Extractor::Outcome& outcome, std::size_t index) {
  if (outcome.reason == Reason::SameFile) items_[index].other = entries_[outcome.former - 1].name;
  return outcome.reason;
}

}  // namespace zip
