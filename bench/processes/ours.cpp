// The library's side of the operations that are measured in processes.

#include <filesystem/archive_change.h>
#include <filesystem/files.h>
#include <filesystem/zip.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <thread>
#include <vector>

namespace {

double processorTime() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

// Packs with this thread and, for two workers, another one. Writes the processor time of the one that
// took more.
int packWith(unsigned int workers, const char* folder, const char* zip) {
  double others = 0;
  const auto run = [&](const std::vector<FileSystem::Task>& tasks) {
    double other = 0;
    std::thread thread([&] {
      tasks.back()();
      other = processorTime();
    });
    for (std::size_t i = 0; i + 1 < tasks.size(); ++i) tasks[i]();
    thread.join();
    others += other;
  };
  const auto options = FileSystem::Options().setExecutor(run, workers);
  const bool isPacked = static_cast<bool>(FileSystem::packFolder(folder, zip, options));
  std::printf("%.2f s\n", std::max(processorTime(), others));
  return isPacked ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  const char* const job = argv[1];
  if (std::strcmp(job, "pack") == 0) return FRT_ZIP_FOLDER(argv[2], argv[3]) ? 0 : 1;
  if (std::strcmp(job, "pack-1") == 0) return packWith(1, argv[2], argv[3]);
  if (std::strcmp(job, "pack-2") == 0) return packWith(2, argv[2], argv[3]);
  if (std::strcmp(job, "unpack") == 0) return FRT_UNZIP_FILE(argv[2], argv[3]) ? 0 : 1;
  if (std::strcmp(job, "copy") == 0) return FileSystem::CopyContent(argv[2], argv[3]) > 0 ? 0 : 1;
  std::fprintf(stderr, "unknown job %s\n", job);
  return 2;
}
