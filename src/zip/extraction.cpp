// ZipArchive: extraction.

#include "zip/extraction.h"

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

// Length of the part of a path that is its folder: up to the last separator, or a drive.
std::size_t folderLength(std::string_view path) {
  const std::size_t separator = path.find_last_of(kSeparators);
  if (separator != std::string_view::npos) return separator + 1;
  return path.size() > 1 && path[1] == ':' ? 2 : 0;
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
  return write(stored, target, folderLength(target));
}

bool Extractor::toPlace(const std::string& stored, const std::string& prefix,
                        const std::string& name) {
  return !leadsOut(name) && write(stored, prefix + name, folderLength(prefix));
}

bool Extractor::write(const std::string& stored, const std::string& target,
                      std::size_t folderLength) {
  if (!locate(stored)) return false;
  const OpenEntry entry(reader_.get(), password_);
  ZipEntryInfo info = {};
  if (!entry || !describe(info)) return false;
  const auto writeTo = [&](const platform::ConfinedDirectory::Fill& fill) {
    return openFolder(target.substr(0, folderLength)) &&
           folder_->write(std::string_view(target).substr(folderLength), fill);
  };
  if (comesInBlocks(info)) {
    return writeTo([&](HANDLE file) { return copyBlocks(file, info.uncompressedSize); });
  }
  unsigned char* const content = content_.of(std::max(info.uncompressedSize, 1U));
  if (!readWhole(reader_.get(), content, info.uncompressedSize)) return false;
  return writeTo([&](HANDLE file) { return writeAll(file, {content, info.uncompressedSize}); });
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

// Opens the folder that the next files are written below, and makes it if it is missing.
bool Extractor::openFolder(const std::string& path) {
  if (folder_ && path == folderPath_) return true;
  folder_.emplace(path);
  if (!*folder_) {
    // With one separator at the end: a pair that begins with `/` would count as the start of a
    // server's name.
    const std::size_t end = path.find_last_not_of(kSeparators) + 1;
    FileSystem::Detail::makeFolders(path.substr(0, end + 1).c_str());
    folder_.emplace(path);
  }
  folderPath_ = path;
  if (*folder_) return true;
  folder_.reset();
  return false;
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
