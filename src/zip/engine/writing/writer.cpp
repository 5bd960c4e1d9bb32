// The writing calls: new entries and their commit.

#include "zip/engine/writing/writer.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "zip/engine/codec/methods.h"
#include "zip/engine/container/end_record.h"
#include "zip/engine/container/entry_name.h"
#include "zip/engine/container/time_field.h"
#include "zip/engine/reading/entry_map.h"

using namespace zip_engine;

namespace {

Bytes bytesOf(const void* data, std::uint32_t size) {
  const auto* const bytes = static_cast<const unsigned char*>(data);
  return bytes == nullptr ? Bytes() : Bytes(bytes, bytes + size);
}

// Sets the name, and what depends on it.
void setName(EntryRecord& record, const char* name, bool withSlashes, bool isUnix) {
  ArchiveName stored = archiveName(name);
  if (isUnix) record.versionMadeBy = kMadeByUnix;
  if (withSlashes) {
    std::replace(stored.bytes.begin(), stored.bytes.end(), '\\', '/');
    record.versionMadeBy = isUnix ? kMadeByUnixWithSlashes : kMadeByWithSlashes;
  }
  record.name = std::move(stored.bytes);
  if (stored.encoding == NameEncoding::Unknown) {
    // Programs take the permissions from the upper half of the attributes if the host is Unix.
    constexpr std::uint32_t kRegularFile = 0100644U << 16;
    record.versionMadeBy = withSlashes ? kMadeByUnknownWithSlashes : kMadeByUnknownNames;
    if (!isUnix) record.externalAttributes |= kRegularFile;
  } else if (record.name.find('\\') != std::string::npos) {
    // In both records: of different names unzip warns.
    appendUnicodePath(record.localExtra, record.name);
    appendUnicodePath(record.centralExtra, record.name);
  } else if (stored.encoding == NameEncoding::Utf8) {
    record.flags |= kFlagUtf8;
  }
}

// Reports whether the content, if its size is known, may have more bytes than 32 bits count, plain
// or stored. Encryption adds some, and so does deflate to what it cannot shrink.
bool mayNeedZip64(const std::optional<std::uint64_t>& size) {
  constexpr std::uint64_t kMostAdded = 1 << 20;
  return !size || *size >= kSaturated32 - kMostAdded;
}

int statusOf(const NewEntry& entry, bool succeeded) {
  if (succeeded) return kSuccess;
  if (entry.isTooLarge()) return ZipStatusTooLarge;
  return entry.hasWrongCrc() ? ZipStatusWrongCrc : kFailure;
}

// Takes the completed entry out of the memory, which the next one uses.
void prepare(ZipWriter& writer) {
  Bytes& bytes = writer.memory->buffer();
  writer.prepared =
      std::make_unique<ZipPreparedEntry>(ZipPreparedEntry{writer.entry->record(), bytes});
  bytes.clear();
}

int finishEntry(ZipWriter& writer, bool complete) {
  if (!complete) {
    const int status = statusOf(*writer.entry, false);
    writer.dropOpen();
    return status;
  }
  if (writer.memory) {
    prepare(writer);
  } else {
    writer.add(writer.entry->record(), writer.entry->start());
  }
  writer.entry.reset();
  return kSuccess;
}

bool commit(ZipWriter& writer, const std::string& comment) {
  const CentralDirectory& before = writer.archive.before();
  const std::uint64_t count = writer.kept ? writer.kept->count : before.entryCount;
  return writer.archive.commit(writer.kept ? writer.kept->blob : before.blob, writer.records,
                               count + writer.completed.size(), comment);
}

}  // namespace

ZipWriter* ZipOpenWriter(const char* path, int mode) {
  auto writer = std::make_unique<ZipWriter>();
  const bool opened =
      mode == ZipModeCreate ? writer->archive.createNew(path) : writer->archive.openExisting(path);
  if (!opened) return nullptr;
  const CentralDirectory& before = writer->archive.before();
  // With a prefix, a directory without records proves nothing about the file.
  if (before.entryCount == 0 && before.base != 0) return nullptr;
  if (mode == ZipModeAppendFirst && before.entryCount != 0) return nullptr;
  if (!endBeforeDirectory(before)) return nullptr;
  writer->mode = mode;
  return writer.release();
}

int ZipCheckEncryption(int encryption) {
  const bool isKnown =
      encryption == ZipEncryptTraditional || (encryption == ZipEncryptAes256 && hasAes());
  return isKnown ? kSuccess : kFailure;
}

int ZipSetEncryption(ZipWriter* writer, int encryption) {
  if (writer == nullptr || ZipCheckEncryption(encryption) != kSuccess) return kFailure;
  writer->usesAes = encryption == ZipEncryptAes256;
  return kSuccess;
}

void ZipSetSlashes(ZipWriter* writer, int slashes) {
  if (writer != nullptr) writer->usesSlashes = slashes != 0;
}

void ZipSetOrigin(ZipWriter* writer, int isUnix, std::uint64_t lastWrite) {
  if (writer == nullptr) return;
  writer->isUnix = isUnix != 0;
  writer->lastWrite = lastWrite;
}

void ZipSetUnknownCrc(ZipWriter* writer, int isUnknown) {
  if (writer != nullptr) writer->knowsCrc = isUnknown == 0;
}

void ZipSetSize(ZipWriter* writer, std::uint64_t size) {
  if (writer != nullptr) writer->nextSize = size;
}

void ZipSetDurable(ZipWriter* writer) {
  if (writer != nullptr) writer->archive.makeDurable();
}

int ZipOpenNewEntry(ZipWriter* writer, const char* name, const ZipNewEntryInfo* info,
                    const void* localExtra, std::uint32_t localExtraLength,
                    const void* centralExtra, std::uint32_t centralExtraLength, const char* comment,
                    int method, int level, int raw, int, int, int, const char* password,
                    std::uint32_t crc) {
  if (writer == nullptr || name == nullptr || *name == '\0') return kFailure;
  writer->dropOpen();
  const std::optional<std::uint64_t> size = std::exchange(writer->nextSize, std::nullopt);
  EntryRecord record;
  record.comment = comment == nullptr ? "" : comment;
  record.localExtra = bytesOf(localExtra, localExtraLength);
  record.centralExtra = bytesOf(centralExtra, centralExtraLength);
  appendLastWrite(record.localExtra, writer->lastWrite);
  appendLastWrite(record.centralExtra, writer->lastWrite);
  setName(record, name, writer->usesSlashes, writer->isUnix);
  const bool isAes = password != nullptr && writer->usesAes;
  const std::size_t added = isAes ? kAesExtraSize : 0;
  record.hasZip64 = raw == 0 && mayNeedZip64(size);
  // Without space for the block the entry has to be smaller.
  if (!fitsFields(record, added)) record.hasZip64 = false;
  if (record.name.empty() || !fitsFields(record, added)) return kFailure;
  if (raw == 0 && !isWritableMethod(static_cast<std::uint32_t>(method))) return kFailure;
  if (level < ZipLevelDefault || level > 9) return kFailure;
  record.method = static_cast<std::uint16_t>(method);
  if (raw != 0 && password != nullptr) record.flags |= kFlagEncrypted;
  if (info != nullptr) {
    record.dosDate = info->dosDate != 0 ? info->dosDate : dosDateOf(info->date);
    record.internalAttributes = static_cast<std::uint16_t>(info->internalAttributes);
    record.externalAttributes |= info->externalAttributes;
  }
  writer->entry.emplace(writer->output(), writer->encoders, std::move(record),
                        NewEntryOptions{.level = level,
                                        .raw = raw != 0,
                                        .password = password,
                                        .usesAes = isAes,
                                        .knowsCrc = writer->knowsCrc,
                                        .expectedCrc = crc,
                                        .size = size.value_or(0)});
  return kSuccess;
}

int ZipWriteEntry(ZipWriter* writer, const void* data, std::uint32_t length) {
  if (writer == nullptr || !writer->entry || (data == nullptr && length != 0)) return kFailure;
  NewEntry& entry = *writer->entry;
  return statusOf(entry, entry.write(static_cast<const unsigned char*>(data), length));
}

int ZipCloseNewEntry(ZipWriter* writer) {
  if (writer == nullptr || !writer->entry) return kFailure;
  return finishEntry(*writer, writer->entry->finish());
}

int ZipCloseRawEntry(ZipWriter* writer, std::uint32_t uncompressedSize, std::uint32_t crc) {
  if (writer == nullptr || !writer->entry) return kFailure;
  return finishEntry(*writer, writer->entry->finishRaw(uncompressedSize, crc));
}

int ZipCancelNewEntry(ZipWriter* writer) {
  if (writer == nullptr) return kFailure;
  if (writer->entry) {
    writer->dropOpen();
  } else if (!writer->completed.empty()) {
    writer->dropLast();
  } else {
    return kFailure;
  }
  return kSuccess;
}

void ZipAbandonWriter(ZipWriter* writer) {
  if (writer == nullptr) return;
  const std::unique_ptr<ZipWriter> owner(writer);
  writer->dropOpen();
  writer->archive.restore();
}

int ZipCloseWriter(ZipWriter* writer, const char* globalComment) {
  if (writer == nullptr) return kFailure;
  const std::unique_ptr<ZipWriter> owner(writer);
  writer->dropOpen();
  const bool isUnchanged = writer->mode != ZipModeCreate && writer->completed.empty() &&
                           !writer->kept && globalComment == nullptr;
  if (isUnchanged) {
    writer->archive.restore();
    return kSuccess;
  }
  const std::string comment =
      globalComment != nullptr ? globalComment : writer->archive.before().comment;
  if (comment.size() > kLongestField || mayHoldEndRecord(comment)) {
    writer->archive.restore();
    return kFailure;
  }
  if (commit(*writer, comment)) {
    writer->archive.moveToStart(std::move(writer->records), writer->completed.size(), comment);
    return kSuccess;
  }
  const DWORD error = GetLastError();
  writer->archive.restore();
  SetLastError(error);
  return kFailure;
}
