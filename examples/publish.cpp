// Copies a file into a directory, which is created if it is missing, unless the
// directory has a copy that is as new.
// Usage: publish FILE DIRECTORY

#include <filesystem/files.h>

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const std::string target = std::string(argv[2]) + "\\";
  if (FileSystem::EnsurePathExists(target.c_str()) == 0) {
    std::fprintf(stderr, "cannot write to %s\n", argv[2]);
    return 1;
  }
  const int copied =
      FileSystem::CopyFileA(argv[1], target.c_str(), FileSystem::kCopyIfMissingOrOlder);
  std::puts(copied != 0 ? "copied" : "not copied");
  return 0;
}
