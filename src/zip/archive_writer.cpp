#include "zip/archive_writer.h"

#include <utility>

#include "zip/archive_reader.h"
#include "zip/engine.h"
#include "zip/entry_names.h"

namespace zip {
namespace {

ZipDateWords dateWords(const SYSTEMTIME& time) {
  return {.second = time.wSecond,
          .minute = time.wMinute,
          .hour = time.wHour,
          .day = time.wDay,
          .month = time.wMonth - 1u,
          .year = time.wYear};
}

}  // namespace

void Crc32::add(const unsigned char* data, std::uint32_t size) {
  value_ = ZipCrc32(value_, data, size);
}

ArchiveWriter::ArchiveWriter(const char* path, Mode mode)
    : writer_(ZipOpenWriter(path, mode == Mode::Create ? ZipModeCreate : ZipModeAppend)) {}

ArchiveWriter::~ArchiveWriter() { commit(nullptr); }

bool ArchiveWriter::hasAes() { return ZipCheckEncryption(ZipEncryptAes256) == 0; }

void ArchiveWriter::useSlashes(bool slashes) { ZipSetSlashes(writer_, slashes ? 1 : 0); }

bool ArchiveWriter::begin(const NewEntry& entry) {
  constexpr int kWindowBits = -15;
  constexpr int kMemoryLevel = 8;
  const int encryption = entry.encryption.isAes ? ZipEncryptAes256 : ZipEncryptTraditional;
  ZipNewEntryInfo info = {};
  info.date = dateWords(entry.time);
  info.externalAttributes = entry.attributes;
  // No other call of the library could find a longer name.
  return entry.name.size() <= kLongestName && ZipSetEncryption(writer_, encryption) == 0 &&
         ZipOpenNewEntry(writer_, entry.name.c_str(), &info, nullptr, 0, nullptr, 0, entry.comment,
                         ZipMethodDeflate, ZipLevelDefault, 0, kWindowBits, kMemoryLevel, 0,
                         entry.encryption.password, entry.crc) == 0;
}

bool ArchiveWriter::write(const unsigned char* data, std::uint32_t size) {
  return succeeded(ZipWriteEntry(writer_, data, size));
}

bool ArchiveWriter::finish() { return succeeded(ZipCloseNewEntry(writer_)); }

bool ArchiveWriter::succeeded(int status) {
  if (status != 0) status_ = status;
  return status == 0;
}

ArchiveWriter::Failure ArchiveWriter::failure() const {
  if (status_ == ZipStatusTooLarge) return Failure::TooLarge;
  return status_ == ZipStatusWrongCrc ? Failure::WrongCrc : Failure::Archive;
}

std::uint32_t ArchiveWriter::drop(const std::function<bool(const std::string&)>& drops) {
  const auto call = [](const char* name, void* context) {
    return (*static_cast<const std::function<bool(const std::string&)>*>(context))(name);
  };
  return ZipDropEntries(writer_, call,
                        const_cast<std::function<bool(const std::string&)>*>(&drops));
}

void ArchiveWriter::abandon() { ZipAbandonWriter(std::exchange(writer_, nullptr)); }

bool ArchiveWriter::copy(ArchiveReader& from) {
  return ZipCopyEntry(writer_, from.reader_.get()) == 0;
}

ArchiveWriter::Commit ArchiveWriter::commit(const char* globalComment) {
  const int status = ZipCloseWriter(std::exchange(writer_, nullptr), globalComment);
  if (status < 0) return Commit::Failed;
  return status == 0 ? Commit::Complete : Commit::Partial;
}

}  // namespace zip
