#include <filesystem/archive.h>

#include <algorithm>
#include <cstdint>
#include <unordered_map>
#include <utility>

#include "files/attributes.h"
#include "files/target_folder.h"
#include "path/zero_terminated.h"
#include "platform/unique_handle.h"
#include "reporting/progress_relay.h"
#include "reporting/reasons.h"
#include "zip/archive_reader.h"
#include "zip/entry_names.h"
#include "zip/entry_path.h"
#include "zip/extraction.h"

namespace FileSystem {

using Detail::ProgressRelay;
using zip::ArchiveReader;
using zip::Extractor;

struct Archive::State {
  explicit State(const char* path)
      // Others may read. Held for as long as the reader, which opens the file by itself.
      : lock(CreateFileA(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                         FILE_ATTRIBUTE_NORMAL, nullptr)) {
    if (lock) reader.emplace(path);
  }

  platform::FileHandle lock;
  std::optional<ArchiveReader> reader;
  std::optional<std::vector<Entry>> entries;
};

namespace {

const char* passwordOf(const Options& options) {
  return options.password().empty() ? nullptr : options.password().c_str();
}

void expect(ProgressRelay& progress, const std::vector<Entry>& entries) {
  std::uint64_t bytes = 0;
  for (const Entry& entry : entries) {
    // What an archive claims can exceed 64 bits.
    bytes += std::min(entry.size, UINT64_MAX - bytes);
  }
  progress.expect(entries.size(), bytes);
}

// Runs `work(relay)` on one entry. Reason::Missing if the archive does not have it.
template <typename Work>
Reason onEntry(ArchiveReader* reader, const Entry& entry, const Options& options, Work work) {
  if (reader == nullptr || !reader->moveTo(entry.position)) return Reason::Missing;
  ProgressRelay progress(options.progress());
  progress.expect(1, entry.size);
  Reason reason = Reason::Cancelled;
  if (progress.begin(entry.name)) reason = work(progress);
  progress.end();
  progress.rethrow();
  return reason;
}

// Passes pieces to a host's function.
Sink guarded(ProgressRelay& progress, const Sink& sink) {
  return [&](const unsigned char* data, std::size_t size) {
    return progress.guard([&] { return sink(data, size); }, false);
  };
}

// Of the entries of a name, only the last one can be in the folder.
class LastOfNames {
 public:
  explicit LastOfNames(const std::vector<Entry>& entries) {
    for (std::size_t i = 0; i < entries.size(); ++i) last_[entries[i].name] = i;
  }

  bool has(const Entry& entry, std::size_t index) const { return last_.at(entry.name) == index; }

 private:
  std::unordered_map<std::string_view, std::size_t> last_;
};

// Calls `work(entry, index, item)` for each entry until the call is cancelled, and appends the items
// with its results. Returns the reason of the whole call.
template <typename Work>
Reason forEachEntry(const std::vector<Entry>& entries, ProgressRelay& progress, Report& report,
                    Work work) {
  for (std::size_t i = 0; i < entries.size() && !progress.isCancelled(); ++i) {
    const Entry& entry = entries[i];
    if (!progress.begin(entry.name)) break;
    ItemResult item{entry.name, Reason::None, {}, entry.isFolder};
    item.reason = work(entry, i, item);
    report.items.push_back(std::move(item));
    progress.end();
  }
  progress.rethrow();
  return progress.isCancelled() ? Reason::Cancelled : Reason::None;
}

}  // namespace

Archive::Archive() = default;
Archive::Archive(Archive&& other) noexcept = default;
Archive& Archive::operator=(Archive&& other) noexcept = default;
Archive::~Archive() = default;

Reason Archive::open(const char* path) {
  close();
  auto state = std::make_unique<State>(path);
  if (!state->lock) {
    const DWORD error = GetLastError();
    return Detail::isDirectory(path) ? Reason::IsAFolder : Detail::reasonOfError(error);
  }
  if (!*state->reader) {
    return zip::isPartOfSplitArchive(path) ? Reason::SplitArchive : Reason::NotAnArchive;
  }
  state_ = std::move(state);
  return Reason::None;
}

void Archive::close() { state_.reset(); }

bool Archive::isOpen() const { return state_ != nullptr; }

const std::vector<Entry>& Archive::entries() const {
  static const std::vector<Entry> kNone;
  if (!state_) return kNone;
  if (!state_->entries) {
    ArchiveReader& reader = *state_->reader;
    std::vector<Entry> entries;
    entries.reserve(reader.entryCount());
    reader.forEachEntry([&] {
      entries.push_back(reader.record());
      return true;
    });
    state_->entries = std::move(entries);
  }
  return *state_->entries;
}

std::string Archive::comment() const {
  return state_ ? state_->reader->globalComment() : std::string();
}

std::uint64_t Archive::unusedBytes() const { return state_ ? state_->reader->unusedBytes() : 0; }

bool Archive::contains(const char* name) const {
  return state_ && state_->reader->locateAny(zip::storedName(name));
}

std::optional<Entry> Archive::find(const char* name) const {
  return contains(name) ? std::optional(state_->reader->record()) : std::nullopt;
}

Reason Archive::read(const Entry& entry, const Sink& sink, const Options& options) const {
  ArchiveReader* const reader = state_ ? &*state_->reader : nullptr;
  return onEntry(reader, entry, options, [&](ProgressRelay& progress) {
    return Extractor(*reader, passwordOf(options), progress).toSink(guarded(progress, sink));
  });
}

Reason Archive::readAll(const Entry& entry, std::vector<unsigned char>& bytes,
                        const Options& options) const {
  ArchiveReader* const reader = state_ ? &*state_->reader : nullptr;
  bytes.clear();
  return onEntry(reader, entry, options, [&](ProgressRelay& progress) {
    return Extractor(*reader, passwordOf(options), progress).toBytes(bytes);
  });
}

Reason Archive::extract(const Entry& entry, const char* file, const Options& options) const {
  ArchiveReader* const reader = state_ ? &*state_->reader : nullptr;
  return onEntry(reader, entry, options, [&](ProgressRelay& progress) {
    const std::string target(file);
    const std::string folder = target.substr(0, zip::directoryLength(target));
    const Reason reason = folder.empty() ? Reason::None : Detail::createFolder(folder);
    if (reason != Reason::None) return reason;
    Extractor extractor(*reader, passwordOf(options), progress);
    return extractor.toFile(target, options.existing()).reason;
  });
}

Report Archive::unpack(const std::vector<Entry>& entries, const char* folder,
                       const Options& options) const {
  Report report;
  const std::string base = Detail::folderText(folder);
  report.reason = isOpen() ? Detail::createFolder(base) : Reason::Missing;
  if (report.reason != Reason::None) return report;
  ProgressRelay progress(options.progress());
  expect(progress, entries);
  const LastOfNames last(entries);
  Extractor extractor(*state_->reader, passwordOf(options), progress);
  const auto unpackOne = [&](const Entry& entry, std::size_t index, ItemResult& item) {
    const std::string target = base + std::string(Detail::upToZero(entry.name));
    if (!last.has(entry, index)) {
      item.other = entry.name;
      return Reason::NameTaken;
    }
    if (!state_->reader->moveTo(entry.position)) return Reason::Missing;
    if (entry.isFolder) return extractor.createFolder(target, base.size());
    // The numbers of names begin with 1, because 0 is that of none.
    const auto [reason, former] =
        extractor.toFileBelow(target, base.size(), options.existing(), index + 1);
    if (reason == Reason::SameFile) item.other = entries[former - 1].name;
    return reason;
  };
  report.reason = forEachEntry(entries, progress, report, unpackOne);
  return report;
}

Report Archive::test(const std::vector<Entry>& entries, const Options& options) const {
  Report report;
  report.reason = isOpen() ? Reason::None : Reason::Missing;
  if (report.reason != Reason::None) return report;
  ProgressRelay progress(options.progress());
  expect(progress, entries);
  Extractor extractor(*state_->reader, passwordOf(options), progress);
  const Sink drop = [](const unsigned char*, std::size_t) { return true; };
  const auto testOne = [&](const Entry& entry, std::size_t, ItemResult&) {
    return state_->reader->moveTo(entry.position) ? extractor.toSink(drop) : Reason::Missing;
  };
  report.reason = forEachEntry(entries, progress, report, testOne);
  return report;
}

}  // namespace FileSystem
