#include <filesystem/archive.h>

#include <utility>

#include "files/attributes.h"
#include "files/target_folder.h"
#include "platform/unique_handle.h"
#include "reporting/progress_relay.h"
#include "reporting/reasons.h"
#include "zip/archive_reader.h"
#include "zip/entry_metadata.h"
#include "zip/entry_names.h"
#include "zip/entry_path.h"
#include "zip/extraction.h"
#include "zip/unpacking.h"

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
    const platform::NewMetadata metadata = zip::newMetadata(entry, zip::keptBy(options));
    switch (zip::kindOf(entry)) {
      case zip::EntryKind::Special:
        return Reason::NotAFile;
      case zip::EntryKind::Link:
        return options.links() ? extractor.toLink(target, options.existing(), metadata).reason
                               : Reason::IsALink;
      default:
        return extractor.toFile(target, options.existing(), metadata).reason;
    }
  });
}

Report Archive::unpack(const std::vector<Entry>& entries, const char* folder,
                       const Options& options) const {
  Report report;
  const std::string base = Detail::folderText(folder);
  const bool isNew = GetFileAttributesA(base.c_str()) == INVALID_FILE_ATTRIBUTES;
  report.reason = isOpen() ? Detail::createFolder(base) : Reason::Missing;
  if (report.reason != Reason::None) return report;
  ProgressRelay progress(options.progress());
  expect(progress, entries);
  report = zip::Unpacking(*state_->reader, entries, base, isNew, options, progress).run();
  progress.rethrow();
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
  for (const Entry& entry : entries) {
    if (progress.isCancelled() || !progress.begin(entry.name)) break;
    const bool isThere = state_->reader->moveTo(entry.position);
    report.items.push_back(
        {entry.name, isThere ? extractor.toSink(drop) : Reason::Missing, {}, entry.isFolder});
    progress.end();
  }
  progress.rethrow();
  if (progress.isCancelled()) report.reason = Reason::Cancelled;
  return report;
}

}  // namespace FileSystem
