#include "zip/extraction.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "files/make_folders.h"
#include "zip/entry_path.h"

namespace zip {
namespace {

bool writeAll(HANDLE file, std::span<const unsigned char> bytes) {
  constexpr std::size_t kLargestWrite = std::size_t{1} << 30;
  for (std::size_t done = 0; done < bytes.size();) {
    const DWORD size = static_cast<DWORD>(std::min(kLargestWrite, bytes.size() - done));
    DWORD written = 0;
    if (WriteFile(file, bytes.data() + done, size, &written, nullptr) == 0 || written != size) {
      return false;
    }
    done += size;
  }
  return true;
}

// Reads all content into memory that grows as bytes arrive.
bool readGrowing(OpenEntry& entry, std::size_t size, std::vector<unsigned char>& bytes) {
  constexpr std::size_t kGrowth = 4;
  bytes = {};
  while (bytes.size() < size) {
    const std::size_t done = bytes.size();
    const std::size_t count = std::min<std::size_t>(kReadBlock, size - done);
    if (done + count > bytes.capacity()) bytes.reserve(std::min(size, (done + count) * kGrowth));
    bytes.resize(done + count);
    if (entry.read(bytes.data() + done, static_cast<std::uint32_t>(count)) !=
        static_cast<int>(count)) {
      return false;
    }
  }
  return true;
}

// Creates a directory and its missing parents. Separators at the end are left out: a pair that
// begins with a slash would count as the start of a server name.
void createDirectories(const std::string& path) {
  FileSystem::Detail::makeFolders(path.substr(0, path.find_last_not_of("\\/") + 1).c_str());
}

}  // namespace

bool Extractor::toBytes(const std::string& stored, std::vector<unsigned char>& bytes) {
  if (!archive_.locate(stored)) return false;
  OpenEntry entry(archive_, password_);
  if (!entry) return false;
  const EntryInfo info = archive_.describe();
  if (isLikelySize(info)) {
    platform::reserveForFilling(bytes, info.size);
    bytes.resize(info.size);
    if (entry.readAll(bytes.data(), info.size)) return true;
  } else if (readGrowing(entry, info.size, bytes)) {
    return true;
  }
  bytes = {};
  return false;
}

bool Extractor::toFile(const std::string& stored, const std::string& target) {
  return write(stored, target, directoryLength(target));
}

bool Extractor::toFileBelow(const std::string& stored, const std::string& target,
                            std::size_t prefixLength) {
  const std::string_view whole(target);
  if (escapesTarget(whole.substr(prefixLength))) return false;
  return write(stored, target, directoryLength(whole.substr(0, prefixLength)));
}

bool Extractor::write(const std::string& stored, const std::string& target,
                      std::size_t directoryLength) {
  if (!archive_.locate(stored)) return false;
  OpenEntry entry(archive_, password_);
  if (!entry) return false;
  const EntryInfo info = archive_.describe();
  const auto writeTarget = [&](const platform::ConfinedDirectory::Fill& fill) {
    return openDirectory(target.substr(0, directoryLength)) &&
           directory_->write(std::string_view(target).substr(directoryLength), fill);
  };
  if (isReadInBlocks(info)) {
    return writeTarget([&](HANDLE file) { return copyBlocks(entry, file); });
  }
  // Read first, so that a damaged entry leaves no trace.
  unsigned char* const content = content_.reserve(info.size);
  if (!entry.readAll(content, info.size)) return false;
  return writeTarget([&](HANDLE file) { return writeAll(file, {content, info.size}); });
}

bool Extractor::copyBlocks(OpenEntry& entry, HANDLE file) {
  unsigned char* const block = content_.reserve(kReadBlock);
  for (;;) {
    const int count = entry.read(block, kReadBlock);
    if (count <= 0) return count == 0;
    if (!writeAll(file, {block, static_cast<std::size_t>(count)})) return false;
  }
}

// Makes the directory the open one, and creates it if it is missing.
bool Extractor::openDirectory(const std::string& path) {
  if (directory_ && *directory_ && path == directoryPath_) return true;
  directoryPath_ = path;
  directory_.emplace(path);
  if (!*directory_) {
    createDirectories(path);
    directory_.emplace(path);
  }
  return static_cast<bool>(*directory_);
}

}  // namespace zip
