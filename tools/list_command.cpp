// list.

#include <algorithm>
#include <cinttypes>
#include <cstdio>

#include "archive_reading.h"
#include "commands.h"
#include "text.h"

using FileSystem::Entry;

namespace {

const char* encryptionName(FileSystem::Encryption encryption) {
  using FileSystem::Encryption;
  switch (encryption) {
    case Encryption::None:
      return "none";
    case Encryption::Traditional:
      return "zip";
    case Encryption::Aes256:
      return "AES";
    case Encryption::Unsupported:
      return "strong";
  }
  return "";
}

// The date and time of an entry; empty if it has none.
std::string dateOf(const FileSystem::EntryTime& time, char separator) {
  if (time.year == 0) return {};
  char text[40];
  std::snprintf(text, sizeof(text), "%04u-%02u-%02u%c%02u:%02u:%02u", unsigned{time.year},
                unsigned{time.month}, unsigned{time.day}, separator, unsigned{time.hour},
                unsigned{time.minute}, unsigned{time.second});
  return text;
}

// Percentage by which packing reduced the size.
int saved(std::uint64_t size, std::uint64_t packed) {
  if (size == 0) return 0;
  // The sizes that an archive claims can have any ratio.
  constexpr double kLeast = -9999;
  const double share = 100 * static_cast<double>(packed) / static_cast<double>(size);
  return static_cast<int>(std::max(kLeast, 100 - share));
}

void writeTable(const std::vector<Entry>& entries) {
  std::uint64_t size = 0;
  std::uint64_t packed = 0;
  std::size_t directories = 0;
  std::printf("%12s %12s %6s  %-19s  %-8s  %-9s  %-7s  name\n", "size", "packed", "saved",
              "modified", "CRC-32", "method", "encrypt");
  for (const Entry& entry : entries) {
    std::printf("%12" PRIu64 " %12" PRIu64 " %5d%%  %-19s  %08" PRIx32 "  %-9s  %-7s  %s\n",
                entry.size, entry.storedSize, saved(entry.size, entry.storedSize),
                dateOf(entry.modified, ' ').c_str(), entry.crc, methodText(entry.method).c_str(),
                encryptionName(entry.encryption), printable(entry.name).c_str());
    size += entry.size;
    packed += entry.storedSize;
    if (entry.isFolder) ++directories;
  }
  std::printf("%12" PRIu64 " %12" PRIu64 " %5d%%  %s, %s\n", size, packed, saved(size, packed),
              counted(entries.size() - directories, "file", "files").c_str(),
              counted(directories, "directory", "directories").c_str());
}

void writeJson(const std::vector<Entry>& entries) {
  const char* separator = "[";
  for (const Entry& entry : entries) {
    const std::string date = dateOf(entry.modified, 'T');
    std::printf("%s\n  {\"name\": %s, \"directory\": %s, \"size\": %" PRIu64
                ", \"packedSize\": %" PRIu64 ", \"modified\": %s, \"crc32\": \"%08" PRIx32
                "\", \"method\": \"%s\", \"encryption\": \"%s\", \"comment\": %s}",
                separator, jsonString(entry.name).c_str(), entry.isFolder ? "true" : "false",
                entry.size, entry.storedSize, date.empty() ? "null" : jsonString(date).c_str(),
                entry.crc, methodText(entry.method).c_str(), encryptionName(entry.encryption),
                jsonString(entry.comment).c_str());
    separator = ",";
  }
  std::printf("%s\n]\n", entries.empty() ? "[" : "");
}

}  // namespace

void list(const std::string& zip, const std::vector<std::string>& patterns, ListFormat format) {
  const FileSystem::Archive archive = openArchive(zip);
  std::vector<Entry> entries = archive.entries();
  if (!patterns.empty()) entries = selectEntries(entries, patterns, zip);
  switch (format) {
    case ListFormat::kNames:
      for (const Entry& entry : entries) std::printf("%s\n", printable(entry.name).c_str());
      break;
    case ListFormat::kTable:
      writeTable(entries);
      break;
    case ListFormat::kJson:
      writeJson(entries);
      break;
  }
}
