// ZipArchive: extraction.

#include "zip/extraction.h"

#include <filesystem/path.h>
#include <filesystem/zip_archive.h>

#include <algorithm>
#include <climits>
#include <span>
#include <string_view>

#include "files/make_folders.h"

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

constexpr std::uint32_t kBlock = 256 << 10;

// Whether nothing is gained from holding the whole entry in memory.
bool comesInBlocks(const ZipEntryInfo& info) {
  return info.method == ZipMethodStored ? info.uncompressedSize > kBlock
                                        : info.compressedSize > ZipLargestInflatedAtOnce;
}

// The open entry's bytes, to a place with room for them.
bool readWhole(ZipReader* reader, unsigned char* place, std::uint32_t entrySize) {
  // One read, but for entries beyond what its result can count. An empty entry
  // is read too, so that its checks are made.
  std::uint32_t done = 0;
  do {
    const std::uint32_t size = std::min<std::uint32_t>(entrySize - done, INT_MAX);
    const int read = ZipReadEntry(reader, place + done, size);
    if (read < 0 || (read == 0 && size != 0)) return false;
    done += static_cast<std::uint32_t>(read);
  } while (done < entrySize);
  return true;
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
template <typename Fill>
bool replaceFile(const char* target, Fill fill) {
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
  const bool complete = file && fill(file.get());
  file.reset();
  const bool replaced = complete && ::CopyFileA(temporary, target, FALSE) != 0;
  DeleteFileA(temporary);
  return replaced;
}

// Makes or replaces a file with what `fill(handle)` writes, if that gives true.
template <typename Fill>
bool writeFile(const char* target, Fill fill) {
  platform::FileHandle file(CreateFileA(target, GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                        CREATE_NEW, FILE_ATTRIBUTE_ARCHIVE, nullptr));
  if (!file) return GetLastError() == ERROR_FILE_EXISTS && replaceFile(target, fill);
  if (fill(file.get())) return true;
  file.reset();
  DeleteFileA(target);
  return false;
}

}  // namespace

Extractor::Extractor(const char* archive, const char* password)
    : reader_(ZipOpenReader(archive)), password_(password) {}

bool Extractor::locate(const std::string& stored) {
  return stored.size() <= kLongestName && ZipLocateEntry(reader_.get(), stored.c_str(), 0) == 0;
}

bool Extractor::describe(ZipEntryInfo& info) {
  return ZipReadEntryInfo(reader_.get(), &info, nullptr, 0, nullptr, 0, nullptr, 0) == 0;
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
  if (!locate(stored)) return false;
  const OpenEntry entry(reader_.get(), password_);
  ZipEntryInfo info = {};
  if (!entry || !describe(info)) return false;
  platform::reserveForFilling(bytes, info.uncompressedSize);
  bytes.resize(info.uncompressedSize);
  if (readWhole(reader_.get(), bytes.data(), info.uncompressedSize)) return true;
  bytes.clear();
  return false;
}

bool Extractor::toFile(const std::string& stored, const std::string& target) {
  if (!locate(stored)) return false;
  const OpenEntry entry(reader_.get(), password_);
  ZipEntryInfo info = {};
  if (!entry || !describe(info)) return false;
  if (comesInBlocks(info)) {
    makeFolderOf(target);
    return writeFile(target.c_str(),
                     [&](HANDLE file) { return copyBlocks(file, info.uncompressedSize); });
  }
  unsigned char* const content = content_.of(std::max(info.uncompressedSize, 1U));
  if (!readWhole(reader_.get(), content, info.uncompressedSize)) return false;
  makeFolderOf(target);
  return writeFile(target.c_str(), [&](HANDLE file) {
    return writeAll(file, {content, info.uncompressedSize});
  });
}

// The open entry's bytes, block by block.
bool Extractor::copyBlocks(HANDLE file, std::uint32_t entrySize) {
  unsigned char* const block = content_.of(kBlock);
  for (std::uint32_t done = 0; done < entrySize;) {
    const int read = ZipReadEntry(reader_.get(), block, std::min(kBlock, entrySize - done));
    if (read <= 0 || !writeAll(file, {block, static_cast<std::size_t>(read)})) return false;
    done += static_cast<std::uint32_t>(read);
  }
  return true;
}

void Extractor::makeFolderOf(const std::string& target) {
  std::string folder = FileSystem::extractPath(target);
  if (folder == lastFolder_) return;
  FileSystem::Detail::makeFolders(folder.c_str());
  lastFolder_ = std::move(folder);
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
