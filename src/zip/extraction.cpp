#include "zip/extraction.h"

#include <algorithm>
#include <new>
#include <span>
#include <string_view>

#include "files/attributes.h"
#include "files/folder_failure.h"
#include "files/make_folders.h"
#include "reporting/reasons.h"
#include "zip/entry_path.h"

namespace zip {
namespace {

using FileSystem::ExistingFiles;
using FileSystem::Reason;
using FileSystem::Sink;
using FileSystem::Detail::reasonOfError;
using platform::ConfinedDirectory;
using platform::NewMetadata;

// The number of the name of a file that is written alone.
constexpr std::uint64_t kOnlyName = 1;

ConfinedDirectory::Existing modeOf(ExistingFiles existing) {
  using Existing = ConfinedDirectory::Existing;
  return existing == ExistingFiles::Keep ? Existing::Kept : Existing::Replaced;
}

// Returns why a target could not be written, from the last error. What is missing on the way to it
// is created, so that something else must have its name.
Reason writeFailure(const std::string& target) {
  const DWORD error = GetLastError();
  if (FileSystem::Detail::isDirectory(target.c_str())) return Reason::IsAFolder;
  const Reason reason = reasonOfError(error, Reason::WriteFailed);
  if (reason == Reason::Missing || reason == Reason::Exists) return Reason::NotAFolder;
  if (reason != Reason::WriteFailed) return reason;
  const Reason ofFolder = FileSystem::Detail::folderFailure(target, error);
  return ofFolder == Reason::NotAFolder ? ofFolder : reason;
}

// Returns the outcome of writing a target, from the last error if that has failed.
Extractor::Outcome outcomeOf(const ConfinedDirectory::Result& written, const std::string& target) {
  switch (written.outcome) {
    case ConfinedDirectory::Outcome::Written:
      return {};
    case ConfinedDirectory::Outcome::Kept:
      return {Reason::Exists};
    case ConfinedDirectory::Outcome::SameFile:
      return {Reason::SameFile, written.former};
    default:
      return {writeFailure(target)};
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

// Creates a directory and its missing parents. Separators at the end are left out: a pair that
// begins with a slash would count as the start of a server name.
void createDirectories(const std::string& path) {
  FileSystem::Detail::makeFolders(path.substr(0, path.find_last_not_of("\\/") + 1).c_str());
}

}  // namespace

Reason Extractor::toBytes(std::vector<unsigned char>& bytes) {
  OpenEntry entry(archive_, password_);
  if (!entry) return entry.failure();
  const std::uint64_t largest = std::min<std::uint64_t>(UINT32_MAX, bytes.max_size());
  if (archive_.describe().size > largest) return Reason::TooLarge;
  Reason reason = Reason::None;
  try {
    reason = readAll(entry, bytes);
  } catch (const std::bad_alloc&) {
    reason = Reason::OutOfMemory;
  }
  if (reason != Reason::None) bytes = {};
  return reason;
}

Reason Extractor::readAll(OpenEntry& entry, std::vector<unsigned char>& bytes) {
  const EntryInfo info = archive_.describe();
  const auto size = static_cast<std::uint32_t>(info.size);
  if (isLikelySize(info)) platform::reserveForFilling(bytes, size);
  // A callback would have to wait until content that is read in one call is complete.
  if (isLikelySize(info) && !(progress_.isNeeded() && isReadInBlocks(info))) {
    bytes.resize(size);
    if (!entry.readAll(bytes.data(), size)) return entry.failure();
    progress_.advance(size);
    return Reason::None;
  }
  return readGrowing(entry, size, bytes);
}

// Reads all content into memory that grows as bytes arrive.
Reason Extractor::readGrowing(OpenEntry& entry, std::size_t size,
                              std::vector<unsigned char>& bytes) {
  constexpr std::size_t kGrowth = 4;
  bytes.clear();
  while (bytes.size() < size) {
    const std::size_t done = bytes.size();
    const std::size_t count = std::min<std::size_t>(kReadBlock, size - done);
    if (done + count > bytes.capacity()) bytes.reserve(std::min(size, (done + count) * kGrowth));
    bytes.resize(done + count);
    if (entry.read(bytes.data() + done, static_cast<std::uint32_t>(count)) !=
        static_cast<int>(count)) {
      return entry.failure();
    }
    if (!progress_.advance(count)) return Reason::Cancelled;
  }
  return Reason::None;
}

Reason Extractor::toSink(const Sink& sink) {
  OpenEntry entry(archive_, password_);
  if (!entry) return entry.failure();
  return copyPieces(entry, sink);
}

// Reads the target of a link. A longer one than the system takes is never read.
Reason Extractor::readLink(std::string& target) {
  constexpr std::uint32_t kLongestTarget = 4095;
  if (archive_.describe().size > kLongestTarget) return Reason::PathTooLong;
  std::vector<unsigned char> bytes;
  const Reason reason = toBytes(bytes);
  if (reason != Reason::None) return reason;
  target.assign(bytes.begin(), bytes.end());
  const bool isText = !target.empty() && target.find('\0') == std::string::npos;
  return isText ? Reason::None : Reason::Damaged;
}

Extractor::Outcome Extractor::toFile(const std::string& target, ExistingFiles existing,
                                     const NewMetadata& metadata) {
  return write(target, directoryLength(target), existing, kOnlyName, metadata);
}

Extractor::Outcome Extractor::toLink(const std::string& target, ExistingFiles existing,
                                     const NewMetadata& metadata) {
  return toLinkIn(target, directoryLength(target), existing, kOnlyName, metadata);
}

Extractor::Outcome Extractor::toFileBelow(const std::string& target, std::size_t prefixLength,
                                          ExistingFiles existing, std::uint64_t id) {
  const std::string_view whole(target);
  if (escapesTarget(whole.substr(prefixLength))) return {Reason::NameEscapes};
  return write(target, directoryLength(whole.substr(0, prefixLength)), existing, id, {});
}

Extractor::Outcome Extractor::toFileIn(const std::string& target, std::size_t folderLength,
                                       ExistingFiles existing, std::uint64_t id,
                                       const NewMetadata& metadata) {
  return write(target, folderLength, existing, id, metadata);
}

Extractor::Outcome Extractor::toLinkIn(const std::string& target, std::size_t folderLength,
                                       ExistingFiles existing, std::uint64_t id,
                                       const NewMetadata& metadata) {
  if (!openDirectory(target.substr(0, folderLength))) return {writeFailure(target)};
  Reason reason = Reason::None;
  const auto read = [&](std::string& text) {
    reason = readLink(text);
    return reason == Reason::None;
  };
  const ConfinedDirectory::Result written = directory_->writeLink(
      std::string_view(target).substr(folderLength), read, modeOf(existing), id, metadata);
  if (reason != Reason::None) return {reason};
  const bool isPossible = written || GetLastError() != ERROR_NOT_SUPPORTED;
  return isPossible ? outcomeOf(written, target) : Outcome{Reason::IsALink};
}

Reason Extractor::beginFolder(const std::string& folder, bool isNew) {
  const bool isBegun = openDirectory(folder) && directory_->rememberCreated(isNew);
  return isBegun ? Reason::None : writeFailure({});
}

Reason Extractor::createFolder(const std::string& target, std::size_t folderLength,
                               const NewMetadata& metadata, std::size_t index) {
  const bool isCreated =
      openDirectory(target.substr(0, folderLength)) &&
      directory_->createDirectory(std::string_view(target).substr(folderLength), metadata, index);
  return isCreated ? Reason::None : writeFailure({});
}

void Extractor::finishFolders(const std::function<void(std::size_t, Reason)>& failed) {
  if (!directory_ || !*directory_) return;
  directory_->finishDirectories([&](std::size_t index) {
    failed(index, reasonOfError(GetLastError(), Reason::WriteFailed));
  });
}

Extractor::Outcome Extractor::write(const std::string& target, std::size_t directoryLength,
                                    ExistingFiles existing, std::uint64_t id,
                                    const NewMetadata& metadata) {
  // That of the content, which is not the last error of the call.
  Reason reason = Reason::None;
  const auto writeFrom = [&](const ConfinedDirectory::Fill& fill) {
    const Outcome outcome = writeTarget(target, directoryLength, fill, existing, id, metadata);
    return reason == Reason::None ? outcome : Outcome{reason};
  };
  if (existing == ExistingFiles::Keep) {
    // An entry whose file is kept need not be readable.
    return writeFrom([&](HANDLE file) {
      OpenEntry entry(archive_, password_);
      reason = entry ? readWhole(entry) : entry.failure();
      if (reason == Reason::None) reason = writeContent(entry, file);
      return reason == Reason::None;
    });
  }
  OpenEntry entry(archive_, password_);
  // Read first, so that a damaged entry leaves no trace.
  reason = entry ? readWhole(entry) : entry.failure();
  if (reason != Reason::None) return {reason};
  return writeFrom([&](HANDLE file) {
    reason = writeContent(entry, file);
    return reason == Reason::None;
  });
}

// Reads the content into `content_`, unless it passes in blocks.
Reason Extractor::readWhole(OpenEntry& entry) {
  const EntryInfo info = archive_.describe();
  if (isReadInBlocks(info)) return Reason::None;
  const auto size = static_cast<std::uint32_t>(info.size);
  return entry.readAll(content_.reserve(size), size) ? Reason::None : entry.failure();
}

// Writes the content to a file, after readWhole().
Reason Extractor::writeContent(OpenEntry& entry, HANDLE file) {
  Reason reason = Reason::None;
  const Sink append = [&](const unsigned char* data, std::size_t size) {
    if (!writeAll(file, {data, size})) {
      reason = reasonOfError(GetLastError(), Reason::WriteFailed);
    }
    return reason == Reason::None;
  };
  const EntryInfo info = archive_.describe();
  if (isReadInBlocks(info)) {
    const Reason copied = copyPieces(entry, append);
    return reason == Reason::None ? copied : reason;
  }
  const auto size = static_cast<std::size_t>(info.size);
  if (append(content_.reserve(size), size) && !progress_.advance(size)) {
    return Reason::Cancelled;
  }
  return reason;
}

Extractor::Outcome Extractor::writeTarget(const std::string& target, std::size_t directoryLength,
                                          const ConfinedDirectory::Fill& fill,
                                          ExistingFiles existing, std::uint64_t id,
                                          const NewMetadata& metadata) {
  if (!openDirectory(target.substr(0, directoryLength))) return {writeFailure(target)};
  const std::string_view name = std::string_view(target).substr(directoryLength);
  return outcomeOf(directory_->write(name, fill, modeOf(existing), id, metadata), target);
}

Reason Extractor::copyPieces(OpenEntry& entry, const Sink& sink) {
  unsigned char* const block = content_.reserve(kReadBlock);
  for (;;) {
    const int count = entry.read(block, kReadBlock);
    if (count < 0) return entry.failure();
    if (count == 0) return Reason::None;
    const std::size_t size = static_cast<std::size_t>(count);
    if (!sink(block, size) || !progress_.advance(size)) return Reason::Cancelled;
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
