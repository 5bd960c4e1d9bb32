#include "progress.h"

#include <filesystem/file_stream.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <utility>

namespace {

constexpr std::chrono::milliseconds kDelay{500};
constexpr std::chrono::milliseconds kInterval{100};

// In MB; -1 if the file cannot be read now.
double sizeOf(const std::string& file) {
  FileSystem::FileStream stream;
  if (!stream.open(file.c_str(), FileSystem::FileStream::OpenRead)) return -1;
  return static_cast<double>(stream.size()) / 1e6;
}

}  // namespace

Progress::Progress(std::string what, std::string file)
    : what_(std::move(what)), file_(std::move(file)) {
  if (isatty(STDERR_FILENO) != 0) thread_ = std::thread([this] { show(); });
}

Progress::~Progress() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    finished_ = true;
  }
  over_.notify_one();
  thread_.join();
}

void Progress::show() {
  const auto start = std::chrono::steady_clock::now();
  const auto isFinished = [this] { return finished_; };
  std::unique_lock lock(mutex_);
  if (over_.wait_for(lock, kDelay, isFinished)) return;
  do {
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    const double size = file_.empty() ? -1 : sizeOf(file_);
    std::fprintf(stderr, "\r%s: %.1f s", what_.c_str(), elapsed.count());
    if (size >= 0) std::fprintf(stderr, ", %.1f MB", size);
    std::fputs("\x1b[K", stderr);
    std::fflush(stderr);
  } while (!over_.wait_for(lock, kInterval, isFinished));
  std::fputs("\r\x1b[K", stderr);
}
