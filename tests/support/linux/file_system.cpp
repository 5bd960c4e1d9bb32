// Finds out what the file system of the temporary folder can do.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/opening/descriptor.h"
#include "platform/linux/replacing/durability.h"
#include "support/temporary_folder.h"

namespace support {
namespace {

// Returns the step of write times, from a time that is no multiple of any but the smallest one.
long timeStepOf(const std::string& file) {
  constexpr std::time_t kOddSecond = 1600000001;
  constexpr long kNanoseconds = 987654321;
  setWriteTime(file, kOddSecond, kNanoseconds);
  struct stat status {};
  stat(file.c_str(), &status);
  if (status.st_mtim.tv_sec != kOddSecond) return 2'000'000'000;
  for (const long step : {1L, 100L, 1'000L, 1'000'000L, 10'000'000L}) {
    if (status.st_mtim.tv_nsec == kNanoseconds - kNanoseconds % step) return step;
  }
  return 1'000'000'000;
}

bool keepsModes(const std::string& file) {
  struct stat status {};
  return chmod(file.c_str(), 0604) == 0 && stat(file.c_str(), &status) == 0 &&
         (status.st_mode & 0777) == 0604;
}

bool keepsLargeFiles(const std::string& path) {
  const platform::native::Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  struct stat status {};
  return ftruncate(file.get(), 5L << 30) == 0 && fstat(file.get(), &status) == 0 &&
         status.st_blocks < 1000;
}

bool commitsTogether(const std::string& path) {
  const platform::native::Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return platform::native::canCommitTogether(folder.get());
}

FileSystem tryAll() {
  const TemporaryFolder folder;
  const std::string file = folder.file("file");
  const std::string odd = folder.file("a\\b:c ");
  writeFile(file, "content");
  std::ofstream(odd).close();
  return {.exactCase = !exists(folder.file("FILE")),
          .links = symlink("file", folder.file("link").c_str()) == 0,
          .fifos = mkfifo(folder.file("fifo").c_str(), 0600) == 0,
          .anyName = exists(odd) && !exists(folder.file("a\\b:c")),
          .modes = keepsModes(file),
          .largeFiles = keepsLargeFiles(folder.file("large")),
          .timeStep = timeStepOf(file),
          .exchange = renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, folder.file("link").c_str(),
                                RENAME_EXCHANGE) == 0,
          .commonCommit = commitsTogether(folder.name())};
}

}  // namespace

const FileSystem& fileSystem() {
  static const FileSystem found = tryAll();
  return found;
}

}  // namespace support
