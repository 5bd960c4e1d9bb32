#pragma once
// A line of progress on a terminal, for work that takes longer than half a
// second. Nothing is written without a terminal, and nothing with --quiet.

#include <filesystem/options.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "output.h"

class Progress {
 public:
  // `what` names the work ("packing photos"). `total` is the number of bytes of all
  // of it, 0 if it is unknown. `counter`, if not empty, returns the number of bytes
  // done besides those reported to advance(); it is called on another thread.
  Progress(const Output& output, const std::string& what, std::uint64_t total = 0,
           std::function<std::uint64_t()> counter = {});
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  // Removes the line.
  ~Progress();

  // True if a line would be written.
  static bool isShown(const Output& output);

  void advance(std::uint64_t bytes) { done_ += bytes; }

  // Returns a callback for a call of the library, by which the line follows that call. It must not
  // outlive the object.
  FileSystem::ProgressCallback callback();

 private:
  void show();
  // The line, which fits into `columns`.
  std::string line(double seconds, std::size_t columns) const;

  const std::string what_;
  std::atomic<std::uint64_t> total_;
  const std::function<std::uint64_t()> counter_;
  std::atomic<std::uint64_t> done_{0};
  std::mutex mutex_;
  std::condition_variable over_;
  bool finished_ = false;
  std::thread thread_;
};
