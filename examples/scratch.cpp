// Deletes what earlier runs left in a directory, and works in temporary storage
// there, which is deleted with its object.
// Usage: scratch DIRECTORY

#include <filesystem/files.h>
#include <filesystem/stream.h>
#include <filesystem/temporary_storage.h>

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::string directory = std::string(argv[1]) + "\\";
  constexpr unsigned int kDays = 7;
  std::printf("removed %u old files\n", FileSystem::eraseOldFile(directory, kDays));

  FileSystem::TemporaryStorage storage;
  if (!storage.create(directory, false)) {
    std::fprintf(stderr, "cannot work in %s\n", argv[1]);
    return 1;
  }
  const std::string file = storage.path() + "notes.txt";
  if (!FileSystem::writeContent(file, "deleted with its object")) return 1;
  std::printf("%s\n", FileSystem::readContent(file).c_str());
  return 0;
}
