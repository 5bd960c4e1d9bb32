// The reading calls: opening an archive, walking over its entries, finding and reading them.

#include "zip/engine/reading/reader.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>

#include "zip/engine/container/entry_name.h"
#include "zip/engine/container/status.h"
#include "zip/engine/container/time_field.h"
#include "zip/engine/reading/entry_data.h"
#include "zip/engine/reading/entry_layout.h"
#include "zip/engine/reading/entry_map.h"
#include "zip/engine/reading/record_search.h"
#include "zip/engine/reading/unused_bytes.h"

using namespace zip_engine;

struct ZipReader {
  ArchiveFile file;
  CentralDirectory directory;
  std::size_t current = 0;  // offset of the current record; the blob's size if none
  NameIndex names;
  LocalEntry local;  // of the entry that was opened or copied last
  EntryBuffers buffers;
  std::optional<EntryData> entry;

  bool hasCurrent() const { return current < directory.blob.size(); }
  CentralRecord record() const { return recordAt(directory, current); }
  // Makes the record at an offset the current one, and closes an open entry.
  int moveTo(std::size_t offset) {
    entry.reset();
    current = offset;
    return hasCurrent() ? kSuccess : ZipStatusNoEntry;
  }
};

namespace {

std::unique_ptr<ZipReader> openFile(const char* path) {
  auto reader = std::make_unique<ZipReader>();
  constexpr DWORD kShare = FILE_SHARE_READ | FILE_SHARE_WRITE;
  const bool isOpen = reader->file.open(path, GENERIC_READ, kShare, OPEN_EXISTING);
  return isOpen ? std::move(reader) : nullptr;
}

// Copies a text, cut at `capacity`, with a terminating zero if it is shorter.
void copyText(char* target, std::uint32_t capacity, const void* text, std::size_t length) {
  if (target == nullptr) return;
  const std::size_t count = std::min<std::size_t>(length, capacity);
  std::memcpy(target, text, count);
  if (count < capacity) target[count] = '\0';
}

std::uint32_t saturated(std::uint64_t value) {
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(value, kSaturated32));
}

ZipDateWords dateWords(std::uint32_t dosDate) {
  const std::uint32_t month = dosDate >> 21 & 0xF;
  return {.second = (dosDate & 0x1F) * 2,
          .minute = dosDate >> 5 & 0x3F,
          .hour = dosDate >> 11 & 0x1F,
          .day = dosDate >> 16 & 0x1F,
          .month = month == 0 ? 0 : month - 1,
          .year = (dosDate >> 25) + 1980};
}

}  // namespace

ZipReader* ZipOpenReader(const char* path) {
  std::unique_ptr<ZipReader> reader = openFile(path);
  const bool isRead = reader != nullptr && readCentralDirectory(reader->file, reader->directory);
  return isRead ? reader.release() : nullptr;
}

ZipReader* ZipOpenReaderAt(const char* path, const char* name) {
  if (name == nullptr) return nullptr;
  std::unique_ptr<ZipReader> reader = openFile(path);
  if (reader == nullptr) return nullptr;
  switch (findRecord(reader->file, name, reader->directory)) {
    case RecordSearch::Found:
      return reader.release();
    case RecordSearch::Missing:
      return nullptr;
    case RecordSearch::Undecided:
      break;
  }
  const bool isFound = readCentralDirectory(reader->file, reader->directory) &&
                       ZipLocateEntry(reader.get(), name, 0) == kSuccess;
  return isFound ? reader.release() : nullptr;
}

void ZipCloseReader(ZipReader* reader) { delete reader; }

int ZipReadGlobalInfo(ZipReader* reader, ZipGlobalInfo* info) {
  if (reader == nullptr || info == nullptr) return kFailure;
  info->entryCount = saturated(reader->directory.entryCount);
  info->commentLength = static_cast<std::uint32_t>(reader->directory.comment.size());
  return kSuccess;
}

int ZipReadGlobalComment(ZipReader* reader, char* buffer, std::uint32_t length) {
  if (reader == nullptr) return kFailure;
  const std::string& comment = reader->directory.comment;
  copyText(buffer, length, comment.data(), comment.size());
  return static_cast<int>(std::min<std::size_t>(comment.size(), length));
}

int ZipFirstEntry(ZipReader* reader) { return reader == nullptr ? kFailure : reader->moveTo(0); }

int ZipNextEntry(ZipReader* reader) {
  if (reader == nullptr) return kFailure;
  if (!reader->hasCurrent()) return ZipStatusNoEntry;
  return reader->moveTo(reader->current + reader->record().size());
}

int ZipLocateEntry(ZipReader* reader, const char* name, int) {
  if (reader == nullptr || name == nullptr) return kFailure;
  const std::size_t found = reader->names.find(reader->directory, name);
  return found == NameIndex::kNone ? ZipStatusNoEntry : reader->moveTo(found);
}

int ZipReadEntryInfo(ZipReader* reader, ZipEntryInfo* info, char* name, std::uint32_t nameCapacity,
                     void* extra, std::uint32_t extraCapacity, char* comment,
                     std::uint32_t commentCapacity) {
  if (reader == nullptr || !reader->hasCurrent()) return kFailure;
  const CentralRecord record = reader->record();
  std::string converted;
  const std::string_view shownName = oemName(record, converted);
  if (info != nullptr) {
    *info = {.versionMadeBy = record.versionMadeBy(),
             .versionNeeded = record.versionNeeded(),
             .flags = record.flags(),
             .method = record.method(),
             .dosDate = record.dosDate(),
             .crc = record.crc(),
             .compressedSize = saturated(record.compressedSize),
             .uncompressedSize = saturated(record.uncompressedSize),
             .nameLength = static_cast<std::uint32_t>(shownName.size()),
             .centralExtraLength = record.extraLength(),
             .commentLength = record.commentLength(),
             .diskNumber = record.diskNumber(),
             .internalAttributes = record.internalAttributes(),
             .externalAttributes = record.externalAttributes(),
             .date = dateWords(record.dosDate())};
  }
  copyText(name, nameCapacity, shownName.data(), shownName.size());
  copyText(comment, commentCapacity, record.comment(), record.commentLength());
  if (extra != nullptr) {
    std::memcpy(extra, record.extra(), std::min<std::size_t>(record.extraLength(), extraCapacity));
  }
  return kSuccess;
}

int ZipReadEntryDetails(ZipReader* reader, ZipEntryDetails* details) {
  if (reader == nullptr || details == nullptr || !reader->hasCurrent()) return kFailure;
  const CentralRecord record = reader->record();
  *details = {.compressedSize = record.compressedSize,
              .uncompressedSize = record.uncompressedSize,
              .position = reader->current,
              .method = innerMethodOf(record),
              .encryption = encryptionOf(record),
              .lastWrite = lastWriteIn(record.extra(), record.extraLength())};
  return kSuccess;
}

int ZipMoveToEntry(ZipReader* reader, std::uint64_t position) {
  if (reader == nullptr) return kFailure;
  const std::size_t end = reader->directory.blob.size();
  const bool isRecord = position < end && isRecordAt(reader->directory, position);
  return reader->moveTo(isRecord ? static_cast<std::size_t>(position) : end);
}

int ZipOpenEntry(ZipReader* reader, int*, int*, int raw, const char* password) {
  if (reader == nullptr || !reader->hasCurrent()) return kFailure;
  reader->entry.reset();
  const CentralRecord record = reader->record();
  const int status = raw != 0 ? kSuccess : checkReadable(record, password);
  if (status != kSuccess) return status;
  if (!reader->local.read(reader->file, reader->directory, record)) return ZipStatusDamaged;
  const std::uint64_t position = reader->local.dataPosition();
  EntryData& entry = reader->entry.emplace(
      reader->file, layoutOf(record, position, raw != 0, password), reader->buffers);
  entry.prefetched(reader->local.prefetched(), reader->local.prefetchedSize());
  if (entry.begin()) return kSuccess;
  reader->entry.reset();
  return isEncrypted(record) ? ZipStatusWrongPassword : ZipStatusDamaged;
}

int ZipReadEntry(ZipReader* reader, void* buffer, std::uint32_t size) {
  if (reader == nullptr || !reader->entry || (buffer == nullptr && size != 0)) return kFailure;
  const int count = reader->entry->read(static_cast<unsigned char*>(buffer), size);
  if (count >= 0) return count;
  // The traditional encryption recognizes most wrong passwords when the entry is opened, not all.
  const CentralRecord record = reader->record();
  return isEncrypted(record) && !aesOf(record) ? ZipStatusWrongPassword : count;
}

int ZipReadLocalExtra(ZipReader* reader, void* buffer, std::uint32_t size) {
  if (reader == nullptr || !reader->entry) return kFailure;
  const std::size_t length = reader->local.extraSize();
  if (buffer == nullptr) return static_cast<int>(length);
  const std::size_t count = std::min<std::size_t>(length, size);
  std::copy_n(reader->local.extra(), count, static_cast<unsigned char*>(buffer));
  return static_cast<int>(count);
}

std::uint64_t ZipUnusedBytes(ZipReader* reader) {
  return reader == nullptr ? 0 : unusedBytes(reader->file, reader->directory);
}

void ZipCloseEntry(ZipReader* reader) {
  if (reader != nullptr) reader->entry.reset();
}

namespace zip_engine {

const LocalEntry* readCurrent(ZipReader& reader, CentralRecord& record) {
  if (!reader.hasCurrent()) return nullptr;
  record = reader.record();
  return reader.local.read(reader.file, reader.directory, record) ? &reader.local : nullptr;
}

bool readBytes(ZipReader& reader, std::uint64_t position, unsigned char* buffer, std::size_t size) {
  return reader.local.readBytes(reader.file, position, buffer, size);
}

}  // namespace zip_engine
