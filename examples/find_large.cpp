// Lists the files of a tree that have at least a number of bytes.
// Usage: find_large DIRECTORY PATTERN BYTES

#include <filesystem/enumeration.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

void listLarge(const std::string& directory, const char* pattern, std::uint64_t limit) {
  std::vector<FileSystem::FILE_INFORMATION> files;
  FileSystem::EnumFilesWithPath(files, directory.c_str(), pattern);
  for (const FileSystem::FILE_INFORMATION& file : files) {
    const std::uint64_t size = std::uint64_t{file.nFileSizeHigh} << 32 | file.nFileSizeLow;
    if (size >= limit) std::printf("%s%s\n", directory.c_str(), file.cFileName);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  const std::string root = std::string(argv[1]) + "\\";
  const std::uint64_t limit = std::strtoull(argv[3], nullptr, 10);
  listLarge(root, argv[2], limit);
  std::vector<std::string> directories;
  FileSystem::EnumFolders(directories, root.c_str(), 1);
  for (const std::string& directory : directories) listLarge(directory, argv[2], limit);
  return 0;
}
