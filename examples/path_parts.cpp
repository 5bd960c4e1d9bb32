// Takes a path apart and relates it to a directory.
// Usage: path_parts DIRECTORY PATH

#include <filesystem/path.h>

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const std::string directory = argv[1];
  const std::string path = argv[2];
  std::printf("drive %s\n", FileSystem::extractDrive(path).c_str());
  std::printf("name %s\n", FileSystem::extractName(path).c_str());
  std::printf("extension %s\n", FileSystem::extractExtension(path).c_str());
  std::printf("backup %s\n", FileSystem::replaceExtension(path, "bak").c_str());
  std::printf("below the directory %s\n", FileSystem::subPath(directory, path).c_str());
  return 0;
}
