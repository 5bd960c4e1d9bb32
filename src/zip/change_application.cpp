#include "zip/change_application.h"

#include <optional>
#include <utility>

#include "files/source_file.h"
#include "platform/win32.h"
#include "zip/entry_names.h"
#include "zip/insertion.h"
#include "zip/new_archive.h"
#include "zip/prepared_entries.h"
#include "zip/rewrite.h"

namespace zip {

using FileSystem::ContentSource;
using FileSystem::Options;
using FileSystem::Reason;
using FileSystem::Report;
using FileSystem::Detail::ProgressRelay;

namespace {

bool isMissing(const std::string& path) {
  if (GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES) return false;
  const DWORD error = GetLastError();
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

std::vector<const std::string*> namesOf(const std::vector<Insertion>& insertions) {
  std::vector<const std::string*> names;
  names.reserve(insertions.size());
  for (const Insertion& insertion : insertions) names.push_back(&insertion.name);
  return names;
}

// Returns the number of bytes of a new entry, as far as it is known before it is read.
std::optional<std::uint64_t> sizeOf(const Insertion& insertion) {
  if (const auto* bytes = std::get_if<std::vector<unsigned char>>(&insertion.content)) {
    return bytes->size();
  }
  const bool isNoFile = std::holds_alternative<FolderSource>(insertion.content) ||
                        std::holds_alternative<LinkSource>(insertion.content);
  if (isNoFile) return 0;
  const auto* const file = std::get_if<std::string>(&insertion.content);
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  if (file == nullptr || GetFileAttributesExA(file->c_str(), GetFileExInfoStandard, &data) == 0) {
    return std::nullopt;
  }
  return std::uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow;
}

}  // namespace

ChangeApplication::ChangeApplication(const Changes& changes, const char* archive,
                                     const Options& options, const EntrySettings& settings,
                                     ProgressRelay& progress)
    : changes_(changes),
      path_(archive),
      keepsExisting_(options.existing() == FileSystem::ExistingFiles::Keep),
      settings_(settings),
      progress_(progress),
      workers_(options, progress),
      names_(changes.removals, namesOf(changes.insertions)) {
  for (const std::string& name : changes.removals) items_.push_back({name, Reason::None, {}});
  for (const Insertion& insertion : changes.insertions) {
    const bool isFolder = std::holds_alternative<FolderSource>(insertion.content);
    items_.push_back({insertion.name, Reason::None, {}, isFolder});
  }
}

Report ChangeApplication::run() {
  if (const auto& invalid = names_.invalidName()) {
    fail(*invalid);
  } else {
    apply();
  }
  return std::move(report_);
}

void ChangeApplication::apply() {
  if (isMissing(path_) || isEmptyFile(path_)) return create();
  if (changes_.removals.empty()) {
    // Opened for this process alone before its names are read, so that no entry is added by
    // another one in between.
    ArchiveWriter writer(path_.c_str(), ArchiveWriter::Mode::Append);
    if (!writer) return failArchive(writer.reason());
    writer.forEachName([this](const std::string& stored) { names_.visit(callerName(stored)); });
    if (!canApply()) return;
    if (!names_.dropsAny()) return append(writer);
  }
  rewrite();
}

// Nothing of the new archive is visible until it is complete.
void ChangeApplication::create() {
  if (!canApply() || !canOpenFiles()) return;
  NewArchive archive(path_, NewArchive::Existing::Refuse);
  if (!archive || !archive.begin()) return failArchive(archive.reason());
  expect(0);
  if (!addAll(archive.writer())) return;
  if (!archive.complete()) return failArchive(archive.reason());
  report_.items = std::move(items_);
}

void ChangeApplication::append(ArchiveWriter& writer) {
  if (!canOpenFiles()) return;
  expect(0);
  if (!addAll(writer)) return;
  if (!writer.commit(nullptr)) return failArchive(writer.reason());
  report_.items = std::move(items_);
}

void ChangeApplication::rewrite() {
  Rewrite archive(path_);
  if (archive.reason() != Reason::None) return failArchive(archive.reason());
  // Another process may have changed it since it was open for writing.
  names_.forgetEntries();
  std::uint64_t copied = 0;
  archive.reader().forEachEntry([&] {
    const EntryInfo info = archive.reader().describe();
    const std::string name = archive.nameOf(info);
    names_.visit(name);
    if (!names_.drops(name)) copied += info.storedSize;
    return true;
  });
  if (!canApply() || !canOpenFiles()) return;
  expect(copied);
  if (!reportRemovals()) return failArchive(Reason::Cancelled);
  Rewrite::Plan plan{.drops = [this](const std::string& name) { return names_.drops(name); },
                     .add = {},
                     .mayBeEmpty = true};
  if (!changes_.insertions.empty()) {
    plan.add = [this](ArchiveWriter& writer) { return addAll(writer); };
  }
  if (archive.run(plan, progress_)) {
    report_.items = std::move(items_);
    return;
  }
  if (!archive.failedEntry().empty()) {
    report_.items.push_back({archive.failedEntry(), archive.reason(), {}});
  }
  if (archive.reason() != Reason::None) failArchive(archive.reason());
}

// False if the entries that the archive has rule out a removal or an insertion.
bool ChangeApplication::canApply() {
  const auto failure = names_.failure(keepsExisting_);
  if (failure) fail(*failure);
  return !failure;
}

// Reports all files that cannot be opened before the first one is read, so that a caller who leaves
// them out need not try again for each. False if there is one.
bool ChangeApplication::canOpenFiles() {
  // A single one is opened only once.
  if (changes_.insertions.size() < 2) return true;
  constexpr std::size_t kInterval = 1000;
  std::size_t end = 0;
  std::size_t index = changes_.removals.size();
  for (const Insertion& insertion : changes_.insertions) {
    const auto* const file = std::get_if<std::string>(&insertion.content);
    const Reason reason =
        file == nullptr ? Reason::None : FileSystem::Detail::reasonForSource(file->c_str());
    items_[index].reason = reason;
    ++index;
    if (reason != Reason::None) {
      if (end == 0) report_.reason = reason;
      end = index;
    }
    if (index % kInterval == 0 && !progress_.begin(insertion.name)) {
      failArchive(Reason::Cancelled);
      return false;
    }
  }
  if (end == 0) return true;
  items_.resize(end);
  report_.items = std::move(items_);
  return false;
}

bool ChangeApplication::reportRemovals() {
  for (const std::string& name : changes_.removals) {
    if (!progress_.begin(name) || !progress_.end()) return false;
  }
  return true;
}

// False, with the report complete, if one fails.
bool ChangeApplication::addAll(ArchiveWriter& writer) {
  writer.useWorkers(workers_);
  EntryAdder adder(writer, settings_, progress_);
  const auto prepare = [this](std::size_t at, ArchiveWriter& own, EntryAdder& ownAdder) {
    const Insertion& insertion = changes_.insertions[at];
    // A task calls no function of the host.
    if (std::holds_alternative<ContentSource>(insertion.content)) return Reason::Failed;
    return add(own, ownAdder, insertion);
  };
  PreparedEntries prepared(changes_.insertions.size(), settings_, workers_, prepare);
  std::size_t index = changes_.removals.size();
  for (const Insertion& insertion : changes_.insertions) {
    Reason reason = Reason::Cancelled;
    if (progress_.begin(insertion.name)) {
      const auto entry = prepared.take(index - changes_.removals.size());
      reason = entry ? adder.addPrepared(*entry) : add(writer, adder, insertion);
    }
    if (reason == Reason::None && !progress_.end()) reason = Reason::Cancelled;
    if (reason == Reason::Cancelled || writer.isArchiveAtFault()) {
      failArchive(reason);
      return false;
    }
    if (reason != Reason::None) {
      fail({index, reason, {}});
      return false;
    }
    ++index;
  }
  return true;
}

Reason ChangeApplication::add(ArchiveWriter& writer, EntryAdder& adder,
                              const Insertion& insertion) const {
  writer.useSlashes(insertion.name.find('\\') != std::string::npos);
  const std::string stored = storedName(insertion.name);
  const char* const comment = insertion.comment.c_str();
  if (const auto* file = std::get_if<std::string>(&insertion.content)) {
    return adder.addFile(file->c_str(), stored, comment);
  }
  if (const auto* folder = std::get_if<FolderSource>(&insertion.content)) {
    return adder.addFolder(folder->path.c_str(), stored);
  }
  if (const auto* link = std::get_if<LinkSource>(&insertion.content)) {
    return adder.addLink(link->path.c_str(), stored);
  }
  const EntryMetadata now = presentMetadata(settings_.kept.value_or(KeptMetadata()));
  if (const auto* bytes = std::get_if<std::vector<unsigned char>>(&insertion.content)) {
    return adder.addBytes(*bytes, stored, comment, now);
  }
  return adder.addFrom(std::get<ContentSource>(insertion.content), stored, comment, now);
}

// Sets what the call has to do, `copied` bytes of it for entries that stay.
void ChangeApplication::expect(std::uint64_t copied) {
  if (!progress_.isNeeded()) return;
  std::uint64_t bytes = copied;
  bool areKnown = true;
  for (const Insertion& insertion : changes_.insertions) {
    const std::optional<std::uint64_t> size = sizeOf(insertion);
    areKnown = areKnown && size;
    bytes += size.value_or(0);
  }
  progress_.expect(changes_.removals.size() + changes_.insertions.size(), areKnown ? bytes : 0);
}

void ChangeApplication::fail(const ChangedNames::Failure& failure) {
  items_.resize(failure.index + 1);
  items_.back().reason = failure.reason;
  items_.back().other = failure.other;
  report_ = {failure.reason, std::move(items_)};
}

void ChangeApplication::failArchive(Reason reason) { report_.reason = reason; }

}  // namespace zip
