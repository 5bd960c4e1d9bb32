// Packs a directory into an archive and lists its entries.
// Usage: pack_folder DIRECTORY ZIP

#include <filesystem/access.h>
#include <filesystem/zip.h>
#include <filesystem/zip_archive.h>

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  if (!FRT_ZIP_FOLDER(argv[1], argv[2])) {
    std::fprintf(stderr, "cannot pack all of %s\n", argv[1]);
    return 1;
  }
  ZipArchive archive;
  std::vector<std::pair<std::string, std::string>> entries;
  if (archive.open(argv[2], FileSystem::kAccessRead) == 0 || archive.content(entries) == 0)
    return 1;
  for (const auto& entry : entries) std::printf("%s\n", entry.first.c_str());
  return 0;
}
