#pragma once
// A line of progress on a terminal, for work that takes longer than half a
// second. Without a terminal nothing is written.

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

class Progress {
 public:
  // `what` is what is going on ("packing photos"). `file`, if not empty, is a
  // file that grows with the work; its size is shown.
  explicit Progress(std::string what, std::string file = {});
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  // Takes the line back.
  ~Progress();

 private:
  void show();

  const std::string what_;
  const std::string file_;
  std::mutex mutex_;
  std::condition_variable over_;
  bool finished_ = false;
  std::thread thread_;
};
