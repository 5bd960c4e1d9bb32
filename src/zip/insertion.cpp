#include "zip/insertion.h"

#include <algorithm>
#include <optional>

#include "platform/new_version.h"
#include "platform/unique_handle.h"
#include "zip/archive_reader.h"
#include "zip/rewrite.h"

namespace zip {
namespace {

platform::FileHandle openSource(const char* path) {
  return platform::FileHandle(CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                          nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_ARCHIVE, nullptr));
}

// A file read from its start to its end in blocks.
class BlockReader {
 public:
  // `reportedSize` is the size that the file's attributes report.
  BlockReader(HANDLE file, std::uint64_t reportedSize)
      : file_(file),
        reportedSize_(reportedSize),
        // With a byte more than a small file has, its first read also finds the end.
        block_(static_cast<std::size_t>(std::min<std::uint64_t>(reportedSize + 1, kReadBlock))) {}

  // Passes each block to `use(data, size)`. False if a read or `use` fails.
  template <typename Use>
  bool forEachBlock(Use use) {
    for (std::uint64_t done = 0;;) {
      DWORD size = 0;
      if (ReadFile(file_, block_.data(), static_cast<DWORD>(block_.size()), &size, nullptr) == 0) {
        return false;
      }
      if (size == 0) return true;
      if (!use(block_.data(), size)) return false;
      done += size;
      // A short block that reaches the reported size is the last one. Any other short block may
      // precede a read error, which only another read shows.
      if (size < block_.size() && done == reportedSize_) return true;
    }
  }

  // Returns the CRC-32 of the file and moves the file position back to its start.
  std::optional<std::uint32_t> crc() {
    Crc32 crc;
    const bool complete = forEachBlock([&](const unsigned char* data, DWORD size) {
      crc.add(data, size);
      return true;
    });
    if (!complete || SetFilePointer(file_, 0, nullptr, FILE_BEGIN) != 0) return std::nullopt;
    return crc.value();
  }

 private:
  HANDLE file_;
  std::uint64_t reportedSize_;
  std::vector<unsigned char> block_;
};

SYSTEMTIME localTimeOf(const FILETIME& time) {
  FILETIME local = {};
  SYSTEMTIME result = {};
  FileTimeToLocalFileTime(&time, &local);
  FileTimeToSystemTime(&local, &result);
  return result;
}

AddResult resultOf(ArchiveWriter::Failure failure) {
  if (failure == ArchiveWriter::Failure::TooLarge) return AddResult::TooLarge;
  return failure == ArchiveWriter::Failure::WrongCrc ? AddResult::Unreadable
                                                     : AddResult::NotWritten;
}

bool isEmptyFile(const std::string& path) {
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  return GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data) != 0 &&
         (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0 && data.nFileSizeLow == 0 &&
         data.nFileSizeHigh == 0;
}

}  // namespace

bool addBytes(ArchiveWriter& writer, const std::vector<unsigned char>& bytes,
              const std::string& stored, const char* comment, const Encryption& encryption) {
  if (bytes.size() > UINT32_MAX) return false;
  const std::uint32_t size = static_cast<std::uint32_t>(bytes.size());
  Crc32 crc;
  if (encryption.needsCrc()) crc.add(bytes.data(), size);
  NewEntry entry{.name = stored,
                 .comment = comment,
                 .time = {},
                 .attributes = 0,
                 .encryption = encryption,
                 .crc = crc.value()};
  GetSystemTime(&entry.time);
  return writer.begin(entry) && writer.write(bytes.data(), size) && writer.finish();
}

AddResult addFile(ArchiveWriter& writer, const char* source, const std::string& stored,
                  const char* comment, const Encryption& encryption) {
  const platform::FileHandle file = openSource(source);
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  if (!file || GetFileAttributesExA(source, GetFileExInfoStandard, &data) == 0) {
    return AddResult::Unreadable;
  }
  const std::uint64_t size = std::uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow;
  if (size >= kTooManyBytes) return AddResult::TooLarge;
  BlockReader reader(file.get(), size);
  // The traditional encryption begins with the CRC of all content, so the file is read twice.
  const std::optional<std::uint32_t> crc = encryption.needsCrc() ? reader.crc() : Crc32().value();
  if (!crc) return AddResult::Unreadable;
  if (!writer.begin({.name = stored,
                     .comment = comment,
                     .time = localTimeOf(data.ftLastWriteTime),
                     .attributes = data.dwFileAttributes,
                     .encryption = encryption,
                     .crc = *crc})) {
    return AddResult::NameTooLong;
  }
  bool isWritten = true;
  const bool isRead = reader.forEachBlock([&](const unsigned char* bytes, DWORD count) {
    return isWritten = writer.write(bytes, count);
  });
  if (isWritten && !isRead) return AddResult::Unreadable;
  return isWritten && writer.finish() ? AddResult::Added : resultOf(writer.failure());
}

bool canOpenSource(const char* source) { return static_cast<bool>(openSource(source)); }

bool canAppend(const ArchiveReader& archive, const std::string& path) {
  return archive || isEmptyFile(path);
}

// An append keeps the old state in a second directory past the new bytes. A file without bytes has
// no state to keep, and a part of its first archive would be no archive. So that one is written
// beside it.
ArchiveWriter::Commit append(const std::string& path,
                             const std::function<bool(ArchiveWriter&)>& add) {
  std::optional<platform::NewVersion> version;
  if (isEmptyFile(path) && !version.emplace(path)) return ArchiveWriter::Commit::Failed;
  ArchiveWriter writer((version ? version->create() : path).c_str(), ArchiveWriter::Mode::Append);
  const bool isAdded = writer && add(writer);
  const ArchiveWriter::Commit result = writer.commit(nullptr);
  const bool isDone = isAdded && result != ArchiveWriter::Commit::Failed;
  return isDone && (!version || version->putInPlace()) ? result : ArchiveWriter::Commit::Failed;
}

bool insertEntry(const std::string& path, const std::string& name, bool overwrite,
                 const std::function<bool()>& hasSource,
                 const std::function<bool(ArchiveWriter&)>& add) {
  const std::string stored = storedName(name);
  if (overwrite) {
    Rewrite archive(path);
    if (archive.reader().locate(stored)) {
      // The old and the new entry are exchanged in one step, so that at every instant the archive
      // has one of them.
      if (hasSource()) return archive.run({name}, add) == Rewrite::Result::Replaced;
      archive.run({name});
      return false;
    }
    if (!canAppend(archive.reader(), path)) return false;
  } else {
    ArchiveReader archive(path.c_str());
    if (archive.locate(stored) || !canAppend(archive, path)) return false;
  }
  return append(path, add) == ArchiveWriter::Commit::Complete;
}

}  // namespace zip
