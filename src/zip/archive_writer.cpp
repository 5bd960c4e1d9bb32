#include "zip/archive_writer.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "files/attributes.h"
#include "reporting/reasons.h"
#include "zip/archive_reader.h"
#include "zip/engine.h"
#include "zip/entry_names.h"
#include "zip/host_workers.h"

namespace zip {

using FileSystem::Reason;

namespace {

ZipDateWords dateWords(const SYSTEMTIME& time) {
  return {.second = time.wSecond,
          .minute = time.wMinute,
          .hour = time.wHour,
          .day = time.wDay,
          .month = time.wMonth - 1u,
          .year = time.wYear};
}

// Returns nothing for a value that is no method.
std::optional<int> numberOf(FileSystem::Method method) {
  switch (method) {
    case FileSystem::Method::Deflate:
      return ZipMethodDeflate;
    case FileSystem::Method::Zstandard:
      return ZipMethodZstandard;
  }
  return std::nullopt;
}

}  // namespace

Reason reasonForArchive(const char* path, DWORD error) {
  if (FileSystem::Detail::isDirectory(path)) return Reason::IsAFolder;
  // A read past the end is an error on Windows.
  const bool isRead = error == ERROR_SUCCESS || error == ERROR_HANDLE_EOF;
  if (!isRead) return FileSystem::Detail::reasonOfError(error);
  return isPartOfSplitArchive(path) ? Reason::SplitArchive : Reason::NotAnArchive;
}

static_assert(ArchiveWriter::kLargestPrepared == ZipLargestPrepared);

std::uint64_t PreparedEntry::contentSize() const { return ZipPreparedSize(*entry_); }

void PreparedEntry::Deleter::operator()(ZipPreparedEntry* entry) const { ZipFreePrepared(entry); }

void Crc32::add(const unsigned char* data, std::uint32_t size) {
  value_ = ZipCrc32(value_, data, size);
}

ArchiveWriter::ArchiveWriter(const char* path, Mode mode) {
  SetLastError(ERROR_SUCCESS);
  writer_ = ZipOpenWriter(path, mode == Mode::Create ? ZipModeCreate : ZipModeAppend);
  if (writer_ != nullptr) return;
  reason_ = reasonForArchive(path, GetLastError());
  isArchiveAtFault_ = true;
}

ArchiveWriter::ArchiveWriter() : writer_(ZipOpenPreparer()), isPreparing_(true) {}

ArchiveWriter::~ArchiveWriter() { abandon(); }

bool ArchiveWriter::hasAes() { return ZipCheckEncryption(ZipEncryptAes256) == 0; }

bool ArchiveWriter::hasMethod(FileSystem::Method method) {
  const std::optional<int> number = numberOf(method);
  return number && ZipCanWrite(static_cast<std::uint32_t>(*number)) != 0;
}

void ArchiveWriter::useSlashes(bool slashes) { ZipSetSlashes(writer_, slashes ? 1 : 0); }

void ArchiveWriter::useWorkers(HostWorkers& workers) {
  const auto run = [](std::uint32_t count, void (*task)(std::uint32_t, const void*),
                      const void* taskContext, void* context) {
    return static_cast<HostWorkers*>(context)->run(
        count, [=](std::size_t index) { task(static_cast<std::uint32_t>(index), taskContext); });
  };
  ZipSetWorkers(writer_, static_cast<std::uint32_t>(workers.count()), run, &workers);
}

void ArchiveWriter::makeDurable() { ZipSetDurable(writer_); }

bool ArchiveWriter::has(const std::string& stored) const {
  return ZipHasEntry(writer_, stored.c_str());
}

void ArchiveWriter::forEachName(const std::function<void(const std::string&)>& visit) const {
  const auto call = [](const char* name, void* context) {
    (*static_cast<const std::function<void(const std::string&)>*>(context))(name);
  };
  ZipVisitNames(writer_, call, const_cast<std::function<void(const std::string&)>*>(&visit));
}

bool ArchiveWriter::begin(const NewEntry& entry) {
  constexpr int kWindowBits = -15;
  constexpr int kMemoryLevel = 8;
  constexpr std::size_t kLongestComment = 0xFFFF;
  const int encryption = entry.encryption.isAes ? ZipEncryptAes256 : ZipEncryptTraditional;
  const int level = std::clamp(entry.level, ZipLevelDefault, 9);
  const int method = level == 0 ? ZipMethodStored : numberOf(entry.method).value_or(-1);
  ZipNewEntryInfo info = {};
  const EntryMetadata& metadata = entry.metadata;
  info.date = dateWords(metadata.local);
  info.externalAttributes = metadata.attributes;
  if (metadata.mode) {
    info.externalAttributes = (metadata.attributes & 0xFFFF) | *metadata.mode << 16;
  }
  // No other call of the library could find a longer name.
  if (entry.name.size() > kLongestName) return fail(Reason::NameTooLong);
  if (std::strlen(entry.comment) > kLongestComment) return fail(Reason::TooLarge);
  if (ZipSetEncryption(writer_, encryption) != 0) return fail(Reason::UnsupportedEncryption);
  ZipSetUnknownCrc(writer_, entry.crc ? 0 : 1);
  if (entry.size) ZipSetSize(writer_, *entry.size);
  ZipSetOrigin(writer_, metadata.mode ? 1 : 0, metadata.lastWrite);
  SetLastError(ERROR_SUCCESS);
  const int status = ZipOpenNewEntry(writer_, entry.name.c_str(), &info, nullptr, 0, nullptr, 0,
                                     entry.comment, method, level, 0, kWindowBits, kMemoryLevel, 0,
                                     entry.encryption.password, entry.crc.value_or(0));
  return status == 0 || fail(Reason::Failed);
}

bool ArchiveWriter::fail(Reason reason) {
  reason_ = reason;
  return false;
}

bool ArchiveWriter::write(const unsigned char* data, std::uint32_t size) {
  return succeeded(ZipWriteEntry(writer_, data, size));
}

bool ArchiveWriter::finish() { return succeeded(ZipCloseNewEntry(writer_)); }

std::optional<PreparedEntry> ArchiveWriter::takePrepared() {
  ZipPreparedEntry* const entry = ZipTakePrepared(writer_);
  return entry == nullptr ? std::nullopt : std::optional<PreparedEntry>(entry);
}

bool ArchiveWriter::append(const PreparedEntry& entry) {
  return succeeded(ZipAppendPrepared(writer_, *entry.entry_));
}

bool ArchiveWriter::succeeded(int status) {
  switch (status) {
    case 0:
      return true;
    case ZipStatusTooLarge:
      return fail(Reason::TooLarge);
    case ZipStatusWrongCrc:
      return fail(Reason::ReadFailed);
    case ZipStatusDamagedSource:
      return fail(Reason::Damaged);
    case ZipStatusCancelled:
      return fail(Reason::Cancelled);
    default:
      isArchiveAtFault_ = true;
      return fail(FileSystem::Detail::reasonOfError(GetLastError(), Reason::WriteFailed));
  }
}

std::uint32_t ArchiveWriter::drop(const std::function<bool(const std::string&)>& drops) {
  const auto call = [](const char* name, void* context) {
    return (*static_cast<const std::function<bool(const std::string&)>*>(context))(name);
  };
  return ZipDropEntries(writer_, call,
                        const_cast<std::function<bool(const std::string&)>*>(&drops));
}

void ArchiveWriter::abandon() { ZipAbandonWriter(std::exchange(writer_, nullptr)); }

bool ArchiveWriter::copy(ArchiveReader& from, const std::function<bool(std::uint64_t)>& advance) {
  const auto call = [](std::uint64_t size, void* context) {
    return (*static_cast<const std::function<bool(std::uint64_t)>*>(context))(size);
  };
  return succeeded(ZipCopyEntry(writer_, from.reader_.get(), call,
                                const_cast<std::function<bool(std::uint64_t)>*>(&advance)));
}

bool ArchiveWriter::commit(const char* globalComment) {
  SetLastError(ERROR_SUCCESS);
  return succeeded(ZipCloseWriter(std::exchange(writer_, nullptr), globalComment));
}

}  // namespace zip
