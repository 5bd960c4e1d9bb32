#include "progress.h"

#include <chrono>
#include <cstdio>

#include "terminal.h"
#include "text.h"
#include "thread_start.h"

namespace {

constexpr std::chrono::milliseconds kDelay{500};
constexpr std::chrono::milliseconds kInterval{100};

std::string formatted(const char* format, double value) {
  char text[64];
  std::snprintf(text, sizeof(text), format, value);
  return text;
}

}  // namespace

Progress::Progress(const Output& output, const std::string& what) : what_(printable(what)) {
  if (!isTerminal(stderr) || output.quiet) return;
  const StartWithoutRequests started;
  thread_ = std::thread([this] { show(); });
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

FileSystem::ProgressCallback Progress::callback() {
  if (!interruption_) interruption_.emplace();
  return [this](const FileSystem::Progress& progress) {
    done_ = progress.bytesDone;
    if (progress.bytesExpected != 0) total_ = progress.bytesExpected;
    return !isInterrupted();
  };
}

std::string Progress::line(double seconds, std::size_t columns) const {
  constexpr double kMega = 1e6;
  const auto done = static_cast<double>(done_.load());
  const auto total = static_cast<double>(total_.load());
  std::string numbers;
  if (done > 0) {
    numbers += formatted(", %.1f MB", done / kMega);
    numbers += formatted(", %.1f MB/s", done / kMega / seconds);
  }
  if (done > 0 && done < total) {
    numbers += formatted(", %.0f %%", 100 * done / total);
    numbers += formatted(", %.0f s left", seconds / done * (total - done));
  } else {
    numbers += formatted(", %.1f s", seconds);
  }
  // The numbers come first where the terminal is narrow.
  if (numbers.size() >= columns) return std::string(fitting(numbers.substr(2), columns));
  return std::string(fitting(what_, columns - numbers.size())) + numbers;
}

void Progress::show() {
  const auto start = std::chrono::steady_clock::now();
  const auto isFinished = [this] { return finished_; };
  std::unique_lock lock(mutex_);
  if (over_.wait_for(lock, kDelay, isFinished)) return;
  do {
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    // A line of the full width would scroll.
    const std::string text = line(elapsed.count(), terminalWidth() - 1);
    clearLine(stderr);
    std::fputs(text.c_str(), stderr);
    std::fflush(stderr);
  } while (!over_.wait_for(lock, kInterval, isFinished));
  clearLine(stderr);
}
