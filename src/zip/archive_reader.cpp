#include "zip/archive_reader.h"

#include "platform/win32.h"
#include "zip/engine.h"
#include "zip/entry_names.h"

namespace zip {
namespace {

using NameBuffer = char[kLongestName + 1];

// Reads the name of the current entry, cut at kLongestName bytes, and its record unless that is
// null.
void readEntry(ZipReader* reader, ZipEntryInfo* record, NameBuffer& name) {
  ZipReadEntryInfo(reader, record, name, kLongestName, nullptr, 0, nullptr, 0);
}

}  // namespace

void ArchiveReader::Closer::operator()(ZipReader* reader) const { ZipCloseReader(reader); }

ArchiveReader::ArchiveReader(const char* path) : reader_(ZipOpenReader(path)) {}

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
  return stored.size() <= kLongestName && ZipLocateEntry(reader_.get(), stored.c_str(), 0) == 0;
}

EntryInfo ArchiveReader::describe() const {
  ZipEntryInfo record = {};
  NameBuffer name = {};
  readEntry(reader_.get(), &record, name);
  return {.name = name,
          .nameIsCut = record.nameLength > kLongestName,
          .isDirectory = (record.externalAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0,
          .isStored = record.method == ZipMethodStored,
          .size = record.uncompressedSize,
          .storedSize = record.compressedSize,
          .commentLength = record.commentLength};
}

void ArchiveReader::readComment(std::uint32_t length, std::string& comment) const {
  comment.resize(length);
  ZipReadEntryInfo(reader_.get(), nullptr, nullptr, 0, nullptr, 0, comment.data(), length);
}

OpenEntry::OpenEntry(ArchiveReader& archive, const char* password)
    : reader_(archive.reader_.get()),
      open_(ZipOpenEntry(reader_, nullptr, nullptr, 0, password) == 0) {}

OpenEntry::~OpenEntry() {
  if (open_) ZipCloseEntry(reader_);
}

int OpenEntry::read(unsigned char* buffer, std::uint32_t size) {
  return ZipReadEntry(reader_, buffer, size);
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
  constexpr std::uint32_t kLargestWhole = 128 << 20;
  if (info.size > kLargestWhole || !isLikelySize(info)) return true;
  return info.isStored ? info.size > kReadBlock : info.storedSize > ZipLargestInflatedAtOnce;
}

}  // namespace zip
