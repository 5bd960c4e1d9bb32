// Reads the central directory of arbitrary bytes as the program does for its listings.

#include "central_directory.h"

#include <filesystem/zip_archive.h>

#include "workplace.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string path = fuzz::Workplace::instance().write("a.zip", data, size);
  isSplitArchive(path);
  const auto directory = readCentralDirectory(path);
  if (!directory) return 0;
  constexpr std::size_t kSmallestRecord = 46;
  fuzz::require(directory->records.size() * kSmallestRecord <= size, "every record is in the file");
  fuzz::require(directory->unusedBytes <= size, "unused bytes are in the file");
  std::uint64_t texts = 0;
  for (const EntryRecord& record : directory->records) {
    texts += record.nameLength + record.comment.size();
  }
  fuzz::require(texts <= size, "names and comments are in the file");

  ZipArchive archive;
  std::vector<std::string> names;
  archive.open(path.c_str(), FileSystem::kAccessRead);
  fuzz::require(archive.enumerate(names) == 0 || names.size() == directory->records.size(),
                "the library lists the same entries");
  return 0;
}
