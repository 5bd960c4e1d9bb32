#include "zip/entry_metadata.h"

#include <chrono>

#include "platform/local_time.h"

namespace zip {

using FileSystem::Entry;
using FileSystem::EntryTime;

namespace {

constexpr std::uint32_t kPermissions = 01777;
constexpr std::uint32_t kSetId = 06000;
constexpr std::uint32_t kAnyWrite = 0222;

constexpr std::int64_t kTicksPerSecond = 10000000;
constexpr std::int64_t kSecondsTo1970 = 11644473600;

std::uint64_t ticksOf(const FILETIME& time) {
  return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

FILETIME fileTimeOf(std::uint64_t ticks) {
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

std::uint32_t keptBits(std::uint32_t mode, const KeptMetadata& kept) {
  return mode & (kept.setId ? kPermissions | kSetId : kPermissions);
}

// A link is one by its type alone.
std::optional<std::uint32_t> storedMode(std::uint32_t mode, const KeptMetadata& kept) {
  const bool isStored = mode != 0 && (kept.permissions || (mode & kFileTypes) == kLink);
  if (!isStored) return std::nullopt;
  return (mode & kFileTypes) | keptBits(mode, kept);
}

EntryTime entryTimeOf(const SYSTEMTIME& time) {
  return {.year = time.wYear,
          .month = time.wMonth,
          .day = time.wDay,
          .hour = time.wHour,
          .minute = time.wMinute,
          .second = time.wSecond};
}

std::optional<FILETIME> lastWriteOf(const Entry& entry) {
  if (entry.hasUtc) {
    const std::uint64_t seconds = static_cast<std::uint64_t>(entry.utcSeconds) + kSecondsTo1970;
    return fileTimeOf(seconds * kTicksPerSecond + entry.utcNanoseconds / 100);
  }
  const EntryTime& time = entry.modified;
  if (time.year == 0) return std::nullopt;
  return platform::timeOfLocal({.wYear = time.year,
                                .wMonth = time.month,
                                .wDayOfWeek = 0,
                                .wDay = time.day,
                                .wHour = time.hour,
                                .wMinute = time.minute,
                                .wSecond = time.second,
                                .wMilliseconds = 0});
}

}  // namespace

KeptMetadata keptBy(const FileSystem::Options& options) {
  return {.permissions = options.permissions(), .times = options.times(), .setId = options.setId()};
}

EntryMetadata entryMetadata(const platform::FileMetadata& file, const KeptMetadata& kept) {
  return {.local = platform::localTimeOf(file.lastWrite),
          .lastWrite = kept.times ? ticksOf(file.lastWrite) : 0,
          .attributes = file.attributes,
          .mode = storedMode(file.mode, kept)};
}

EntryMetadata presentMetadata(const KeptMetadata& kept) {
  using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, kTicksPerSecond>>;
  const auto since1970 = std::chrono::system_clock::now().time_since_epoch();
  const std::int64_t ticks =
      std::chrono::duration_cast<Ticks>(since1970).count() + kSecondsTo1970 * kTicksPerSecond;
  return entryMetadata({.size = 0,
                        .attributes = 0,
                        .lastWrite = fileTimeOf(static_cast<std::uint64_t>(ticks)),
                        .mode = 0},
                       kept);
}

platform::NewMetadata newMetadata(const Entry& entry, const KeptMetadata& kept) {
  platform::NewMetadata metadata;
  if (kept.times) metadata.lastWrite = lastWriteOf(entry);
  if (!kept.permissions) return metadata;
  constexpr DWORD kAttributes =
      FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
  metadata.attributes = entry.attributes & kAttributes;
  if (entry.mode != 0) {
    metadata.mode = keptBits(entry.mode, kept);
    if ((entry.mode & kAnyWrite) == 0) metadata.attributes |= FILE_ATTRIBUTE_READONLY;
  }
  return metadata;
}

void setTimes(Entry& entry, const EntryTime& stored, std::uint64_t lastWrite) {
  entry.modified = stored;
  entry.hasUtc = lastWrite != 0;
  if (!entry.hasUtc) return;
  entry.utcSeconds = static_cast<std::int64_t>(lastWrite / kTicksPerSecond) - kSecondsTo1970;
  entry.utcNanoseconds = static_cast<std::uint32_t>(lastWrite % kTicksPerSecond * 100);
  const SYSTEMTIME local = platform::localTimeOf(fileTimeOf(lastWrite));
  if (local.wYear != 0) entry.modified = entryTimeOf(local);
}

EntryKind kindOf(const Entry& entry) {
  if (entry.isFolder) return EntryKind::Folder;
  if (entry.isLink) return EntryKind::Link;
  const std::uint32_t type = entry.mode & kFileTypes;
  // `zip` gives what it reads from a pipe the type of one.
  const bool isFile = type == 0 || type == kRegularFile || type == kDirectory || type == kPipe;
  return isFile ? EntryKind::File : EntryKind::Special;
}

}  // namespace zip
