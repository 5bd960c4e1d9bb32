// ZipArchive: extraction.

#include "zip/extraction.h"

#include <filesystem/path.h>
#include <filesystem/zip_archive.h>

#include <algorithm>
#include <climits>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "files/make_folders.h"
#include "platform/large_memory.h"

namespace zip {
namespace {

constexpr std::string_view kSeparators = "\\/";

// Whether a name leads out of the folder that it is put under.
bool leadsOut(std::string_view name) {
  if (name.empty()) return true;
  if (kSeparators.find(name[0]) != std::string_view::npos) return true;
  const unsigned char drive = static_cast<unsigned char>(name[0] | 0x20);
  if (name.size() > 1 && name[1] == ':' && drive >= 'a' && drive <= 'z') return true;
  for (std::size_t start = 0; start <= name.size();) {
    const std::size_t end = std::min(name.find_first_of(kSeparators, start), name.size());
    if (name.substr(start, end - start) == "..") return true;
    start = end + 1;
  }
  return false;
}

// The size of the reader's current entry, whose bytes go to the place that
// `room(size)` gives.
template <typename Room>
std::optional<std::uint32_t> readCurrent(ZipReader* reader, const char* password, Room room) {
  const OpenEntry entry(reader, password);
  ZipEntryInfo info = {};
  if (!entry || ZipReadEntryInfo(reader, &info, nullptr, 0, nullptr, 0, nullptr, 0) != 0) {
    return std::nullopt;
  }
  unsigned char none = 0;
  unsigned char* const place = info.uncompressedSize == 0 ? &none : room(info.uncompressedSize);
  // One read, but for entries beyond what its result can count. An empty entry
  // is read too, so that its checks are made.
  std::uint32_t done = 0;
  do {
    const std::uint32_t size = std::min<std::uint32_t>(info.uncompressedSize - done, INT_MAX);
    const int read = ZipReadEntry(reader, place + done, size);
    if (read < 0 || (read == 0 && size != 0)) return std::nullopt;
    done += static_cast<std::uint32_t>(read);
  } while (done < info.uncompressedSize);
  return info.uncompressedSize;
}

// Whether one of the folders of `name` under `prefix` is a link, which could
// lead anywhere.
bool goesThroughLink(const std::string& prefix, const std::string& name) {
  for (std::size_t end = name.find_first_of(kSeparators); end != std::string::npos;
       end = name.find_first_of(kSeparators, end + 1)) {
    const DWORD attributes = GetFileAttributesA((prefix + name.substr(0, end)).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return false;
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) return true;
  }
  return false;
}

bool writeAll(HANDLE file, std::span<const unsigned char> bytes) {
  constexpr std::size_t kBlock = std::size_t{1} << 30;
  for (std::size_t done = 0; done < bytes.size();) {
    const DWORD size = static_cast<DWORD>(std::min(kBlock, bytes.size() - done));
    DWORD written = 0;
    if (WriteFile(file, bytes.data() + done, size, &written, nullptr) == 0 || written != size) {
      return false;
    }
    done += size;
  }
  return true;
}

// Replaces an existing file by way of a temporary one, so that its old content
// outlives a full disk.
bool replaceFile(const char* target, std::span<const unsigned char> bytes) {
  // Somebody who holds the target, or its read-only attribute, keeps it.
  if (!platform::FileHandle(CreateFileA(target, GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                        OPEN_EXISTING, FILE_ATTRIBUTE_ARCHIVE, nullptr))) {
    return false;
  }
  char folder[MAX_PATH + 1] = {};
  char temporary[MAX_PATH + 1] = {};
  if (GetTempPathA(sizeof folder, folder) == 0 ||
      GetTempFileNameA(folder, "~za", 0, temporary) == 0) {
    return false;
  }
  platform::FileHandle file(CreateFileA(temporary, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                        FILE_ATTRIBUTE_ARCHIVE, nullptr));
  const bool complete = file && writeAll(file.get(), bytes);
  file.reset();
  const bool replaced = complete && ::CopyFileA(temporary, target, FALSE) != 0;
  DeleteFileA(temporary);
  return replaced;
}

bool writeFile(const char* target, std::span<const unsigned char> bytes) {
  platform::FileHandle file(CreateFileA(target, GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                        CREATE_NEW, FILE_ATTRIBUTE_ARCHIVE, nullptr));
  if (!file) return GetLastError() == ERROR_FILE_EXISTS && replaceFile(target, bytes);
  if (writeAll(file.get(), bytes)) return true;
  file.reset();
  DeleteFileA(target);
  return false;
}

}  // namespace

Extractor::Extractor(const char* archive, const char* password)
    : reader_(ZipOpenReader(archive)), password_(password) {}

unsigned char* Extractor::Content::room(std::size_t size) {
  if (size > capacity_) {
    capacity_ = 0;
    bytes_.reset();
    bytes_ = std::make_unique_for_overwrite<unsigned char[]>(size);
    if (size >= platform::kLargeMemory) platform::expectFilling(bytes_.get(), size);
    capacity_ = size;
  }
  return bytes_.get();
}

template <typename Room>
std::optional<std::uint32_t> Extractor::read(const std::string& stored, Room room) {
  if (stored.size() > kLongestName) return std::nullopt;
  if (ZipLocateEntry(reader_.get(), stored.c_str(), 0) != 0) return std::nullopt;
  return readCurrent(reader_.get(), password_, room);
}

std::vector<std::string> Extractor::names() {
  std::vector<std::string> result;
  for (int status = ZipFirstEntry(reader_.get()); status == 0;
       status = ZipNextEntry(reader_.get())) {
    char name[kLongestName + 1] = {};
    if (ZipReadEntryInfo(reader_.get(), nullptr, name, kLongestName, nullptr, 0, nullptr, 0) != 0) {
      break;
    }
    result.emplace_back(name);
  }
  return result;
}

bool Extractor::toBytes(const std::string& stored, std::vector<unsigned char>& bytes) {
  bytes.clear();
  const auto room = [&](std::uint32_t size) {
    platform::reserveForFilling(bytes, size);
    bytes.resize(size);
    return bytes.data();
  };
  if (read(stored, room)) return true;
  bytes.clear();
  return false;
}

bool Extractor::toFile(const std::string& stored, const std::string& target) {
  const auto room = [this](std::uint32_t size) { return content_.room(size); };
  const std::optional<std::uint32_t> size = read(stored, room);
  if (!size) return false;
  std::string folder = FileSystem::extractPath(target);
  if (folder != lastFolder_) {
    FileSystem::Detail::makeFolders(folder.c_str());
    lastFolder_ = std::move(folder);
  }
  return writeFile(target.c_str(), {content_.room(0), *size});
}

bool Extractor::toPlace(const std::string& stored, const std::string& prefix,
                        const std::string& name) {
  if (leadsOut(name)) return false;
  std::string folder = prefix + name.substr(0, name.find_last_of(kSeparators) + 1);
  if (folder != lastPlace_) {
    if (goesThroughLink(prefix, name)) return false;
    lastPlace_ = std::move(folder);
  }
  return toFile(stored, prefix + name);
}

}  // namespace zip

int ZipArchive::extract(const std::vector<std::string>& names, const char* prefix) const {
  if (canRead() == 0) return 0;
  const ZipHeldFileGuard guard(m_private->file);
  zip::Extractor extractor(m_private->file.name.c_str(), m_private->passwordOrNull());
  if (!extractor) return 0;
  bool any = false;
  for (const std::string& name : names) {
    any |= extractor.toPlace(zip::storedName(name), prefix, name);
  }
  return any ? 1 : 0;
}

int ZipArchive::extract(const char* name, const char* target) const {
  if (canRead() == 0) return 0;
  const ZipHeldFileGuard guard(m_private->file);
  zip::Extractor extractor(m_private->file.name.c_str(), m_private->passwordOrNull());
  return extractor && extractor.toFile(zip::storedName(name), target) ? 1 : 0;
}

int ZipArchive::extract(const char* name, std::vector<unsigned char>& bytes) const {
  if (canRead() == 0) return 0;
  const ZipHeldFileGuard guard(m_private->file);
  zip::Extractor extractor(m_private->file.name.c_str(), m_private->passwordOrNull());
  return extractor && extractor.toBytes(zip::storedName(name), bytes) && !bytes.empty() ? 1 : 0;
}
