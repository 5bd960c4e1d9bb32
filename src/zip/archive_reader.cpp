#include "zip/archive_reader.h"

#include "platform/win32.h"
#include "zip/engine.h"
#include "zip/entry_metadata.h"
#include "zip/entry_names.h"

namespace zip {

using FileSystem::Reason;

namespace {

using NameBuffer = char[kLongestName + 1];

// Reads the name of the current entry, cut at kLongestName bytes, and its record unless that is
// null.
void readEntry(ZipReader* reader, ZipEntryInfo* record, NameBuffer& name) {
  ZipReadEntryInfo(reader, record, name, kLongestName, nullptr, 0, nullptr, 0);
}

// The rest of the external attributes belongs to the system that made the entry.
constexpr std::uint32_t kDosAttributes = 0xFF;

Reason reasonOf(int status) {
  switch (status) {
    case 0:
      return Reason::None;
    case ZipStatusNoEntry:
      return Reason::Missing;
    case ZipStatusNoPassword:
      return Reason::PasswordMissing;
    case ZipStatusWrongPassword:
      return Reason::PasswordWrong;
    case ZipStatusUnknownMethod:
      return Reason::UnsupportedMethod;
    case ZipStatusUnknownEncryption:
      return Reason::UnsupportedEncryption;
    case ZipStatusNoMemory:
      return Reason::OutOfMemory;
    default:
      return Reason::Damaged;
  }
}

FileSystem::Encryption encryptionOf(std::uint32_t encryption) {
  using FileSystem::Encryption;
  switch (encryption) {
    case ZipNotEncrypted:
      return Encryption::None;
    case ZipEncryptedTraditional:
      return Encryption::Traditional;
    case ZipEncryptedAes:
      return Encryption::Aes256;
    default:
      return Encryption::Unsupported;
  }
}

FileSystem::EntryTime timeOf(const ZipEntryInfo& info) {
  constexpr std::uint32_t kMonth = 0xF;
  constexpr std::uint32_t kDay = 0x1F;
  const std::uint32_t month = info.dosDate >> 21 & kMonth;
  const std::uint32_t day = info.dosDate >> 16 & kDay;
  if (month == 0 || month > 12 || day == 0) return {};
  const ZipDateWords& date = info.date;
  return {.year = static_cast<std::uint16_t>(date.year),
          .month = static_cast<std::uint16_t>(month),
          .day = static_cast<std::uint16_t>(day),
          .hour = static_cast<std::uint16_t>(date.hour),
          .minute = static_cast<std::uint16_t>(date.minute),
          .second = static_cast<std::uint16_t>(date.second)};
}

// Programs of Unix store the mode in the upper half of the attributes.
std::uint32_t unixModeOf(const ZipEntryInfo& info) {
  constexpr std::uint32_t kUnix = 3;
  constexpr std::uint32_t kDarwin = 19;
  const std::uint32_t host = info.versionMadeBy >> 8;
  return host == kUnix || host == kDarwin ? info.externalAttributes >> 16 : 0;
}

// The file type counts more than the attributes: some programs set all of these for a file.
bool isFolder(const FileSystem::Entry& entry) {
  if (!entry.name.empty() && (entry.name.back() == '/' || entry.name.back() == '\\')) return true;
  const std::uint32_t type = entry.mode & kFileTypes;
  const bool isMarked =
      type == kDirectory || (type == 0 && (entry.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0);
  return isMarked && entry.size == 0;
}

}  // namespace

bool isPartOfSplitArchive(const char* path) { return ZipIsPartOfSplitArchive(path); }

void ArchiveReader::Closer::operator()(ZipReader* reader) const { ZipCloseReader(reader); }

ArchiveReader::ArchiveReader(const char* path) : reader_(ZipOpenReader(path)) {}

ArchiveReader::ArchiveReader(const char* path, const std::string& stored) {
  if (stored.size() <= kLongestName) reader_.reset(ZipOpenReaderAt(path, stored.c_str()));
}

std::uint32_t ArchiveReader::entryCount() const {
  ZipGlobalInfo info = {};
  ZipReadGlobalInfo(reader_.get(), &info);
  return info.entryCount;
}

std::string ArchiveReader::globalComment() const {
  ZipGlobalInfo info = {};
  ZipReadGlobalInfo(reader_.get(), &info);
  std::string comment(info.commentLength, '\0');
  ZipReadGlobalComment(reader_.get(), comment.data(), info.commentLength);
  return comment;
}

bool ArchiveReader::first() { return ZipFirstEntry(reader_.get()) == 0; }

bool ArchiveReader::next() { return ZipNextEntry(reader_.get()) == 0; }

bool ArchiveReader::names(std::vector<std::string>& names) {
  // Without the other values of a record, which describe() reads too.
  NameBuffer name = {};
  const auto appendName = [&] {
    readEntry(reader_.get(), nullptr, name);
    names.emplace_back(name);
    return true;
  };
  return entryCount() != 0 && forEachEntry(appendName);
}

bool ArchiveReader::locate(const std::string& stored) {
  return stored.size() <= kLongestName && locateAny(stored);
}

bool ArchiveReader::locateAny(const std::string& stored) {
  return ZipLocateEntry(reader_.get(), stored.c_str(), 0) == 0;
}

EntryInfo ArchiveReader::describe() const {
  ZipEntryInfo record = {};
  NameBuffer name = {};
  readEntry(reader_.get(), &record, name);
  ZipEntryDetails details = {};
  ZipReadEntryDetails(reader_.get(), &details);
  return {.name = name,
          .nameIsCut = record.nameLength > kLongestName,
          .isDirectory = (record.externalAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0,
          .isStored = details.method == ZipMethodStored,
          .isDeflated = details.method == ZipMethodDeflate,
          .size = details.uncompressedSize,
          .storedSize = details.compressedSize,
          .commentLength = record.commentLength};
}

void ArchiveReader::readComment(std::uint32_t length, std::string& comment) const {
  comment.resize(length);
  ZipReadEntryInfo(reader_.get(), nullptr, nullptr, 0, nullptr, 0, comment.data(), length);
}

bool ArchiveReader::moveTo(std::uint64_t position) {
  return ZipMoveToEntry(reader_.get(), position) == 0;
}

FileSystem::Entry ArchiveReader::record() const {
  ZipEntryInfo info = {};
  ZipReadEntryInfo(reader_.get(), &info, nullptr, 0, nullptr, 0, nullptr, 0);
  ZipEntryDetails details = {};
  ZipReadEntryDetails(reader_.get(), &details);
  FileSystem::Entry entry;
  std::string stored(info.nameLength, '\0');
  entry.comment.resize(info.commentLength);
  ZipReadEntryInfo(reader_.get(), nullptr, stored.data(), info.nameLength, nullptr, 0,
                   entry.comment.data(), info.commentLength);
  entry.name = callerName(stored);
  entry.size = details.uncompressedSize;
  entry.storedSize = details.compressedSize;
  setTimes(entry, timeOf(info), details.lastWrite);
  entry.crc = info.crc;
  entry.method = static_cast<std::uint16_t>(details.method);
  entry.encryption = encryptionOf(details.encryption);
  entry.attributes = info.externalAttributes & kDosAttributes;
  entry.mode = unixModeOf(info);
  entry.isFolder = isFolder(entry);
  entry.isLink = !entry.isFolder && (entry.mode & kFileTypes) == kLink;
  entry.position = details.position;
  return entry;
}

std::uint64_t ArchiveReader::unusedBytes() const { return ZipUnusedBytes(reader_.get()); }

OpenEntry::OpenEntry(ArchiveReader& archive, const char* password)
    : reader_(archive.reader_.get()),
      status_(ZipOpenEntry(reader_, nullptr, nullptr, 0, password)) {}

OpenEntry::~OpenEntry() { ZipCloseEntry(reader_); }

Reason OpenEntry::failure() const { return reasonOf(status_); }

int OpenEntry::read(unsigned char* buffer, std::uint32_t size) {
  const int count = ZipReadEntry(reader_, buffer, size);
  if (count < 0) status_ = count;
  return count;
}

bool OpenEntry::readAll(unsigned char* buffer, std::uint32_t size) {
  // An empty entry is read too, so that its CRC is checked.
  std::uint32_t done = 0;
  do {
    const int result = read(buffer + done, size - done);
    if (result < 0 || (result == 0 && done < size)) return false;
    done += static_cast<std::uint32_t>(result);
  } while (done < size);
  return true;
}

bool isLikelySize(const EntryInfo& info) {
  constexpr std::uint32_t kSmall = 4 << 20;
  // Deflate shrinks few contents to a smaller part, and none to less than a 1,032nd.
  constexpr std::uint32_t kShare = 64;
  return info.isStored || info.size <= kSmall || info.size / kShare <= info.storedSize;
}

bool isReadInBlocks(const EntryInfo& info) {
  constexpr std::uint32_t kLargestWhole = 4 << 20;
  return info.size > (info.isDeflated ? kLargestWhole : kReadBlock);
}

}  // namespace zip

const char* FileSystem::methodName(std::uint16_t method) { return ZipMethodName(method); }

bool FileSystem::canReadMethod(std::uint16_t method) { return ZipCanRead(method) != 0; }
