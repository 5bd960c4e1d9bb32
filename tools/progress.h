#pragma once
// A line of progress on a terminal, for work that takes longer than half a
// second. Nothing is written without a terminal, and nothing with --quiet.

#include <filesystem/options.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "interruption.h"
#include "output.h"

class Progress {
 public:
  // `what` names the work ("packing photos").
  Progress(const Output& output, const std::string& what);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  // Removes the line.
  ~Progress();

  // Returns a callback for a call of the library, by which the line follows that call. It must not
  // outlive the object. From now on a request to end the program only cancels the call; the program
  // ends with the object, when the call has undone what it had begun.
  FileSystem::ProgressCallback callback();

 private:
  void show();
  // The line, which fits into `columns`.
  std::string line(double seconds, std::size_t columns) const;

  std::optional<Interruption> interruption_;
  const std::string what_;
  std::atomic<std::uint64_t> total_{0};
  std::atomic<std::uint64_t> done_{0};
  std::mutex mutex_;
  std::condition_variable over_;
  bool finished_ = false;
  std::thread thread_;
};
