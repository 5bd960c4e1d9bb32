// Works in temporary storage, and removes old files of earlier runs.
// Usage: scratch FOLDER

#include <filesystem/files.h>
#include <filesystem/stream.h>
#include <filesystem/temporary_storage.h>

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::string folder = std::string(argv[1]) + "\\";
  constexpr unsigned int kDays = 7;
  std::printf("removed %u old files\n", FileSystem::eraseOldFile(folder, kDays));

  FileSystem::TemporaryStorage storage;
  if (!storage.create(folder, false)) {
    std::fprintf(stderr, "cannot work in %s\n", argv[1]);
    return 1;
  }
  const std::string file = storage.path() + "notes.txt";
  if (!FileSystem::writeContent(file, "deleted with the object")) return 1;
  std::printf("%s\n", FileSystem::readContent(file).c_str());
  return 0;
}
