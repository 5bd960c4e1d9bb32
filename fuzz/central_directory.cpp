// Reads the central directory of arbitrary bytes as the program does for its listings.

#include "central_directory.h"

#include <filesystem/access.h>
#include <filesystem/zip_archive.h>

#include "workplace.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string path = fuzz::Workplace::instance().write("a.zip", data, size);
  isSplitArchive(path);
  std::vector<std::string> names;
  ZipArchive archive;
  archive.open(path.c_str(), FileSystem::kAccessRead);
  const bool isListed = archive.enumerate(names) == 1;
  archive.close();
  // A file that is no archive has no directory, or one that the library does not trust.
  const std::size_t count = isListed ? names.size() : size > 0 ? data[0] % 8U : 0;
  const auto directory = readCentralDirectory(path, count);
  fuzz::require(directory || !isListed, "the program reads the directory that the library lists");
  if (!directory) return 0;
  fuzz::require(directory->records.size() == count, "it has as many records");
  fuzz::require(directory->unusedBytes <= size, "unused bytes are in the file");
  std::uint64_t texts = 0;
  for (const EntryRecord& record : directory->records) {
    texts += record.nameLength + record.comment.size();
  }
  fuzz::require(texts <= size, "names and comments are in the file");
  return 0;
}
