// list.

#include <cinttypes>
#include <cstdio>

#include "archive.h"
#include "commands.h"
#include "text.h"

namespace {

const char* encryptionName(Encryption encryption) {
  switch (encryption) {
    case Encryption::kNone:
      return "none";
    case Encryption::kTraditional:
      return "zip";
    case Encryption::kAes:
      return "AES";
    case Encryption::kStrong:
      return "strong";
  }
  return "";
}

// The date and time of an entry; empty if it has none.
std::string dateOf(const EntryRecord& record, char separator) {
  const unsigned year = 1980U + (record.date >> 9);
  const unsigned month = record.date >> 5 & 0xF;
  const unsigned day = record.date & 0x1F;
  if (month == 0 || month > 12 || day == 0) return {};
  char text[40];
  std::snprintf(text, sizeof(text), "%04u-%02u-%02u%c%02u:%02u:%02u", year, month, day, separator,
                record.time >> 11 & 0x1FU, record.time >> 5 & 0x3FU, (record.time & 0x1FU) * 2);
  return text;
}

// Percentage by which packing reduced the size.
int saved(std::uint64_t size, std::uint64_t packed) {
  if (size == 0) return 0;
  return static_cast<int>(100 - 100 * static_cast<double>(packed) / static_cast<double>(size));
}

void writeTable(const std::vector<Entry>& entries) {
  std::uint64_t size = 0;
  std::uint64_t packed = 0;
  std::size_t directories = 0;
  std::printf("%12s %12s %6s  %-19s  %-8s  %-9s  %-7s  name\n", "size", "packed", "saved",
              "modified", "CRC-32", "method", "encrypt");
  for (const Entry& entry : entries) {
    const EntryRecord& record = entry.record;
    std::printf("%12" PRIu64 " %12" PRIu64 " %5d%%  %-19s  %08" PRIx32 "  %-9s  %-7s  %s\n",
                record.size, record.packedSize, saved(record.size, record.packedSize),
                dateOf(record, ' ').c_str(), record.crc, methodName(record.method).c_str(),
                encryptionName(record.encryption), printable(entry.name).c_str());
    size += record.size;
    packed += record.packedSize;
    if (entry.isDirectory()) ++directories;
  }
  std::printf("%12" PRIu64 " %12" PRIu64 " %5d%%  %s, %s\n", size, packed, saved(size, packed),
              counted(entries.size() - directories, "file", "files").c_str(),
              counted(directories, "directory", "directories").c_str());
}

void writeJson(const std::vector<Entry>& entries) {
  const char* separator = "[";
  for (const Entry& entry : entries) {
    const EntryRecord& record = entry.record;
    const std::string date = dateOf(record, 'T');
    std::printf("%s\n  {\"name\": %s, \"directory\": %s, \"size\": %" PRIu64
                ", \"packedSize\": %" PRIu64 ", \"modified\": %s, \"crc32\": \"%08" PRIx32
                "\", \"method\": \"%s\", \"encryption\": \"%s\", \"comment\": %s}",
                separator, jsonString(entry.name).c_str(), entry.isDirectory() ? "true" : "false",
                record.size, record.packedSize, date.empty() ? "null" : jsonString(date).c_str(),
                record.crc, methodName(record.method).c_str(), encryptionName(record.encryption),
                jsonString(record.comment).c_str());
    separator = ",";
  }
  std::printf("%s\n]\n", entries.empty() ? "[" : "");
}

}  // namespace

void list(const std::string& zip, const std::vector<std::string>& patterns, ListFormat format) {
  const Archive archive(zip, FileSystem::kAccessRead);
  const std::vector<std::string> all = patterns.empty() ? std::vector<std::string>{"*"} : patterns;
  std::vector<std::size_t> selected;
  if (!archive.names().empty()) selected = selectEntries(archive.names(), all, zip);
  if (format == ListFormat::kNames) {
    for (const std::size_t i : selected) std::printf("%s\n", printable(archive.names()[i]).c_str());
    return;
  }
  std::vector<Entry> every = archive.entries();
  std::vector<Entry> entries;
  for (const std::size_t i : selected) entries.push_back(std::move(every[i]));
  if (format == ListFormat::kTable) {
    writeTable(entries);
  } else {
    writeJson(entries);
  }
}
