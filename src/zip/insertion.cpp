// ZipArchive: insertion.

#include "zip/insertion.h"

#include <filesystem/zip_archive.h>

#include <algorithm>
#include <functional>
#include <optional>

#include "zip/rewrite.h"

namespace zip {
namespace {

// Bytes read from a source at once.
constexpr std::size_t kBlock = std::size_t{256} << 10;

ZipDateWords dateWords(const SYSTEMTIME& time) {
  return {time.wSecond, time.wMinute, time.wHour, time.wDay, time.wMonth - 1u, time.wYear};
}

platform::FileHandle openSource(const char* path) {
  return platform::FileHandle(CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                          nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_ARCHIVE, nullptr));
}

std::uint32_t startCrc() { return ZipCrc32(0, nullptr, 0); }

bool beginEntry(ZipWriter* writer, const std::string& stored, const ZipNewEntryInfo& info,
                const char* comment, const char* password, std::uint32_t crc) {
  // A longer name could be looked up by no other call.
  if (stored.size() > kLongestName) return false;
  constexpr int kWindowBits = -15;
  constexpr int kMemoryLevel = 8;
  return ZipOpenNewEntry(writer, stored.c_str(), &info, nullptr, 0, nullptr, 0, comment,
                         ZipMethodDeflate, ZipLevelDefault, 0, kWindowBits, kMemoryLevel, 0,
                         password, crc) == 0;
}

// Hands all blocks of a file to `use`; false if a read or `use` fails. A short
// block is the last one where it ends at the size that the file told. Elsewhere it
// may stand in front of an error, which only a further read shows.
template <typename Use>
bool forEachBlock(HANDLE file, std::uint64_t told, std::vector<unsigned char>& block, Use use) {
  for (std::uint64_t done = 0;;) {
    DWORD size = 0;
    if (ReadFile(file, block.data(), static_cast<DWORD>(block.size()), &size, nullptr) == 0) {
      return false;
    }
    if (size == 0) return true;
    if (!use(block.data(), size)) return false;
    done += size;
    if (size < block.size() && done == told) return true;
  }
}

std::optional<std::uint32_t> crcOfFile(HANDLE file, std::uint64_t told,
                                       std::vector<unsigned char>& block) {
  std::uint32_t crc = startCrc();
  const bool read = forEachBlock(file, told, block, [&](const unsigned char* data, DWORD size) {
    crc = ZipCrc32(crc, data, size);
    return true;
  });
  if (!read || SetFilePointer(file, 0, nullptr, FILE_BEGIN) != 0) return std::nullopt;
  return crc;
}

}  // namespace

bool addBytes(ZipWriter* writer, const std::vector<unsigned char>& bytes, const std::string& stored,
              const std::string& comment, const char* password) {
  if (bytes.size() > UINT32_MAX) return false;
  const std::uint32_t size = static_cast<std::uint32_t>(bytes.size());
  SYSTEMTIME now = {};
  GetSystemTime(&now);
  ZipNewEntryInfo info = {};
  info.date = dateWords(now);
  std::uint32_t crc = startCrc();
  if (password != nullptr) crc = ZipCrc32(crc, bytes.data(), size);
  if (!beginEntry(writer, stored, info, comment.c_str(), password, crc)) return false;
  ZipWriteEntry(writer, bytes.data(), size);
  return ZipCloseNewEntry(writer) == 0;
}

bool addFile(ZipWriter* writer, const char* source, const std::string& stored, const char* comment,
             const char* password) {
  const platform::FileHandle file = openSource(source);
  if (!file) return false;
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  FILETIME local = {};
  SYSTEMTIME time = {};
  if (GetFileAttributesExA(source, GetFileExInfoStandard, &data) == 0) return false;
  FileTimeToLocalFileTime(&data.ftLastWriteTime, &local);
  FileTimeToSystemTime(&local, &time);
  ZipNewEntryInfo info = {};
  info.date = dateWords(time);
  info.externalAttributes = data.dwFileAttributes;

  // One byte more than a small file has, so that it is read in one piece.
  const std::uint64_t told = std::uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow;
  std::vector<unsigned char> block(
      static_cast<std::size_t>(std::min<std::uint64_t>(told + 1, kBlock)));
  std::uint32_t crc = startCrc();
  if (password != nullptr) {
    const std::optional<std::uint32_t> whole = crcOfFile(file.get(), told, block);
    if (!whole) return false;
    crc = *whole;
  }
  if (!beginEntry(writer, stored, info, comment, password, crc)) return false;
  const bool complete =
      forEachBlock(file.get(), told, block, [&](const unsigned char* bytes, DWORD size) {
        return ZipWriteEntry(writer, bytes, size) == 0;
      });
  if (!complete) {
    ZipCancelNewEntry(writer);
    return false;
  }
  return ZipCloseNewEntry(writer) == 0;
}

namespace {

bool isEmptyFile(const std::string& path) {
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  return GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data) != 0 &&
         data.nFileSizeLow == 0 && data.nFileSizeHigh == 0;
}

bool appendEntry(const std::string& path, ZipWriterMode mode,
                 const std::function<bool(ZipWriter*)>& add) {
  Writer writer(path.c_str(), mode);
  if (!writer) return false;
  const bool added = add(writer.get());
  return writer.commit(nullptr) && added;
}

// Old and new entry change places in one step, so that at every instant the
// archive has one of them. Without a source the old one goes all the same.
bool replaceEntry(const std::string& path, const std::string& name, bool hasSource,
                  const std::function<bool(ZipWriter*)>& add) {
  if (hasSource) return rewriteArchive(path, {name}, add) == RewriteResult::Replaced;
  rewriteArchive(path, {name});
  return false;
}

// The frame of both insertions; `hasSource` tells whether there is something to
// insert, `add` writes the entry.
bool insertEntry(const std::string& path, const std::string& name, bool overwrite,
                 const std::function<bool()>& hasSource,
                 const std::function<bool(ZipWriter*)>& add) {
  Reader reader(ZipOpenReader(path.c_str()));
  // A file of no bytes is no archive yet.
  if (!reader) return isEmptyFile(path) && appendEntry(path, ZipModeAppendFirst, add);
  const std::string stored = storedName(name);
  const bool exists =
      stored.size() <= kLongestName && ZipLocateEntry(reader.get(), stored.c_str(), 0) == 0;
  reader.reset();
  if (!exists) return appendEntry(path, ZipModeAppend, add);
  return overwrite && replaceEntry(path, name, hasSource(), add);
}

}  // namespace
}  // namespace zip

int ZipArchive::insert(const std::vector<unsigned char>& bytes, const std::string& name,
                       const std::string& comment, int overwrite) {
  if (canRead() == 0 || canWrite() == 0) return 0;
  const ZipHeldFileGuard guard(m_private->file);
  // The text up to the first zero byte counts.
  const std::string entry = name.substr(0, name.find('\0'));
  const auto add = [&](ZipWriter* writer) {
    return zip::addBytes(writer, bytes, zip::storedName(entry), comment,
                         m_private->passwordOrNull());
  };
  const auto hasSource = [] { return true; };
  return zip::insertEntry(m_private->file.name, entry, overwrite != 0, hasSource, add) ? 1 : 0;
}

int ZipArchive::insert(const char* source, const char* name, const char* comment, int overwrite) {
  if (canRead() == 0 || canWrite() == 0) return 0;
  const ZipHeldFileGuard guard(m_private->file);
  const char* const lookup = name != nullptr ? name : source;
  const auto add = [&](ZipWriter* writer) {
    const char* const entry = lookup[0] != '\0' ? lookup : source;
    return zip::addFile(writer, source, zip::storedName(entry), comment != nullptr ? comment : "",
                        m_private->passwordOrNull());
  };
  const auto hasSource = [&] { return static_cast<bool>(zip::openSource(source)); };
  return zip::insertEntry(m_private->file.name, lookup, overwrite != 0, hasSource, add) ? 1 : 0;
}
