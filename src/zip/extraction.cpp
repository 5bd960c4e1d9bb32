#include "zip/extraction.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "files/make_folders.h"
#include "zip/entry_path.h"

namespace zip {
namespace {

using platform::ConfinedDirectory;
using ExistingFiles = ZipArchive::ExistingFiles;
using Result = ZipArchive::Extraction::Result;

ConfinedDirectory::Existing modeOf(ExistingFiles existing) {
  using Existing = ConfinedDirectory::Existing;
  return existing == ExistingFiles::Keep ? Existing::Kept : Existing::Replaced;
}

Result resultOf(ConfinedDirectory::Outcome outcome) {
  using Outcome = ConfinedDirectory::Outcome;
  switch (outcome) {
    case Outcome::Written:
      return Result::Extracted;
    case Outcome::Kept:
      return Result::Kept;
    case Outcome::SameFile:
      return Result::SameFile;
    default:
      return Result::NotWritten;
  }
}

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
  constexpr std::uint64_t kOnlyName = 1;
  return write(stored, target, directoryLength(target), ExistingFiles::Replace, kOnlyName).result ==
         Result::Extracted;
}

Extractor::Outcome Extractor::toFileBelow(const std::string& stored, const std::string& target,
                                          std::size_t prefixLength, ExistingFiles existing,
                                          std::uint64_t id) {
  const std::string_view whole(target);
  if (escapesTarget(whole.substr(prefixLength))) return {Result::Escapes};
  return write(stored, target, directoryLength(whole.substr(0, prefixLength)), existing, id);
}

Extractor::Outcome Extractor::write(const std::string& stored, const std::string& target,
                                    std::size_t directoryLength, ExistingFiles existing,
                                    std::uint64_t id) {
  if (!archive_.locate(stored)) return {Result::Missing};
  OpenEntry entry(archive_, password_);
  if (!entry) return {Result::Unreadable};
  const EntryInfo info = archive_.describe();
  const auto writeTarget = [&](const ConfinedDirectory::Fill& fill) -> Outcome {
    if (!openDirectory(target.substr(0, directoryLength))) return {Result::NotWritten};
    const auto written = directory_->write(std::string_view(target).substr(directoryLength), fill,
                                           modeOf(existing), id);
    return {resultOf(written.outcome), written.former};
  };
  if (isReadInBlocks(info)) {
    bool isSound = true;
    const Outcome outcome =
        writeTarget([&](HANDLE file) { return copyBlocks(entry, file, isSound); });
    return isSound ? outcome : Outcome{Result::Unreadable};
  }
  // Read first, so that a damaged entry leaves no trace.
  unsigned char* const content = content_.reserve(info.size);
  if (!entry.readAll(content, info.size)) return {Result::Unreadable};
  return writeTarget([&](HANDLE file) { return writeAll(file, {content, info.size}); });
}

bool Extractor::copyBlocks(OpenEntry& entry, HANDLE file, bool& isSound) {
  unsigned char* const block = content_.reserve(kReadBlock);
  for (;;) {
    const int count = entry.read(block, kReadBlock);
    isSound = count >= 0;
    if (count <= 0) return isSound;
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
