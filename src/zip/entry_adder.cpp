#include "zip/entry_adder.h"

#include <algorithm>
#include <optional>

#include "files/source_file.h"
#include "platform/file_metadata.h"
#include "platform/symbolic_links.h"
#include "platform/unique_handle.h"
#include "reporting/reasons.h"
#include "zip/archive_reader.h"

namespace zip {

using FileSystem::Reason;
using FileSystem::Detail::openSource;
using FileSystem::Detail::reasonForUnopened;

namespace {

// The progress is reported for so many bytes, in the least size that a part of an entry has.
constexpr std::size_t kStep = 64 << 10;

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

void addTo(Crc32& crc, const std::vector<unsigned char>& bytes) {
  constexpr std::size_t kPiece = 4 << 20;
  for (std::size_t done = 0; done < bytes.size(); done += kPiece) {
    const std::size_t size = std::min(kPiece, bytes.size() - done);
    crc.add(bytes.data() + done, static_cast<std::uint32_t>(size));
  }
}

SYSTEMTIME localTimeOf(const FILETIME& time) {
  FILETIME local = {};
  SYSTEMTIME result = {};
  FileTimeToLocalFileTime(&time, &local);
  FileTimeToSystemTime(&local, &result);
  return result;
}

}  // namespace

Reason readSettings(const FileSystem::Options& options, EntrySettings& settings) {
  using Kind = FileSystem::Encryption;
  settings = {.encryption = {},
              .level = options.level(),
              .method = options.method(),
              .kept = keptBy(options)};
  if (!ArchiveWriter::hasMethod(settings.method)) return Reason::UnsupportedMethod;
  if (options.password().empty() || options.encryption() == Kind::None) return Reason::None;
  const bool isAes = options.encryption() == Kind::Aes256;
  const bool isKnown = isAes ? ArchiveWriter::hasAes() : options.encryption() == Kind::Traditional;
  if (!isKnown) return Reason::UnsupportedEncryption;
  settings.encryption = {.password = options.password().c_str(), .isAes = isAes};
  return Reason::None;
}

// Reads the size of a file, and what its entry gets.
bool EntryAdder::describe(HANDLE file, const char* source, EntryMetadata& metadata,
                          std::uint64_t& size) const {
  if (settings_.kept) {
    platform::FileMetadata data;
    if (!platform::readMetadata(file, source, data)) return false;
    metadata = entryMetadata(data, *settings_.kept);
    size = data.size;
    return true;
  }
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  if (GetFileAttributesExA(source, GetFileExInfoStandard, &data) == 0) return false;
  metadata = {.local = localTimeOf(data.ftLastWriteTime), .attributes = data.dwFileAttributes};
  size = std::uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow;
  return true;
}

Reason EntryAdder::addFile(const char* source, const std::string& stored, const char* comment) {
  const platform::FileHandle file = openSource(source);
  if (!file) return reasonForUnopened(source, GetLastError());
  EntryMetadata metadata;
  std::uint64_t size = 0;
  if (!describe(file.get(), source, metadata, size)) return Reason::ReadFailed;
  if (!writer_.accepts(size)) return Reason::TooLarge;
  BlockReader reader(file.get(), size);
  // The traditional encryption begins with the CRC of all content, so the file is read twice.
  const bool needsCrc = settings_.encryption.needsCrc();
  const std::optional<std::uint32_t> crc = needsCrc ? reader.crc() : Crc32().value();
  if (!crc) return Reason::ReadFailed;
  if (!writer_.begin({.name = stored,
                      .comment = comment,
                      .metadata = metadata,
                      .encryption = settings_.encryption,
                      .crc = crc,
                      .method = settings_.method,
                      .size = size,
                      .level = settings_.level})) {
    return writer_.reason();
  }
  bool isWritten = true;
  const bool isRead = reader.forEachBlock(
      [&](const unsigned char* bytes, DWORD count) { return isWritten = write(bytes, count); });
  if (!isWritten) return failure();
  return isRead ? finish() : Reason::ReadFailed;
}

Reason EntryAdder::addLink(const char* source, const std::string& stored) {
  platform::FileMetadata data;
  std::string target;
  if (!platform::readMetadataOfLink(source, data)) return reasonForUnopened(source, GetLastError());
  if (!platform::readLink(source, target)) return Reason::NotAFile;
  const EntryMetadata metadata = entryMetadata(data, settings_.kept.value_or(KeptMetadata()));
  return addBytes({target.begin(), target.end()}, stored, "", metadata);
}

Reason EntryAdder::addFolder(const char* source, const std::string& stored) {
  platform::FileMetadata data;
  if (!platform::readMetadata(source, data)) {
    return FileSystem::Detail::reasonOfError(GetLastError(), Reason::ReadFailed);
  }
  if ((data.attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) return Reason::NotAFolder;
  const bool isBegun =
      writer_.begin({.name = stored,
                     .comment = "",
                     .metadata = entryMetadata(data, settings_.kept.value_or(KeptMetadata())),
                     .encryption = {},
                     .crc = Crc32().value(),
                     .size = 0,
                     .level = 0});
  return isBegun ? finish() : writer_.reason();
}

Reason EntryAdder::addBytes(const std::vector<unsigned char>& bytes, const std::string& stored,
                            const char* comment, const EntryMetadata& metadata) {
  if (!writer_.accepts(bytes.size())) return Reason::TooLarge;
  Crc32 crc;
  if (settings_.encryption.needsCrc()) addTo(crc, bytes);
  if (!writer_.begin({.name = stored,
                      .comment = comment,
                      .metadata = metadata,
                      .encryption = settings_.encryption,
                      .crc = crc.value(),
                      .method = settings_.method,
                      .size = bytes.size(),
                      .level = settings_.level})) {
    return writer_.reason();
  }
  return write(bytes.data(), bytes.size()) ? finish() : failure();
}

Reason EntryAdder::addPrepared(const PreparedEntry& entry) {
  if (!writer_.append(entry)) return failure();
  for (std::uint64_t left = entry.contentSize(); left > 0;) {
    const std::uint64_t size = std::min<std::uint64_t>(left, kStep);
    if (!progress_.advance(size)) return Reason::Cancelled;
    left -= size;
  }
  return Reason::None;
}

Reason EntryAdder::addFrom(const FileSystem::ContentSource& source, const std::string& stored,
                           const char* comment, const EntryMetadata& metadata) {
  if (!source) return Reason::ReadFailed;
  if (!writer_.begin({.name = stored,
                      .comment = comment,
                      .metadata = metadata,
                      .encryption = settings_.encryption,
                      .crc = std::nullopt,
                      .method = settings_.method,
                      .size = std::nullopt,
                      .level = settings_.level})) {
    return writer_.reason();
  }
  std::vector<unsigned char> block(kReadBlock);
  for (;;) {
    const std::ptrdiff_t count =
        progress_.guard([&] { return source(block.data(), block.size()); }, std::ptrdiff_t{-1});
    if (progress_.isCancelled()) return Reason::Cancelled;
    // A source that returns more than the buffer takes has written past its end, or not said so.
    if (count < 0 || static_cast<std::size_t>(count) > block.size()) return Reason::ReadFailed;
    if (count == 0) return finish();
    if (!write(block.data(), static_cast<std::size_t>(count))) return failure();
  }
}

// Writes in steps, since data that are hard to deflate take some 50 ms for each.
bool EntryAdder::write(const unsigned char* data, std::size_t size) {
  while (size > 0) {
    const std::size_t step = std::min(size, kStep);
    if (!writer_.write(data, static_cast<std::uint32_t>(step)) || !progress_.advance(step)) {
      return false;
    }
    data += step;
    size -= step;
  }
  return true;
}

Reason EntryAdder::finish() { return writer_.finish() ? Reason::None : failure(); }

// Returns why the writer has failed.
Reason EntryAdder::failure() const {
  return progress_.isCancelled() ? Reason::Cancelled : writer_.reason();
}

}  // namespace zip
