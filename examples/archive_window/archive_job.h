#pragma once
// Packing and unpacking on a thread of the host, with a progress that its window can read.

#include <filesystem/results.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

class ArchiveJob {
 public:
  enum class Kind { Pack, Unpack };

  struct State {
    std::string name;  // the file or entry in work
    std::uint64_t bytesDone = 0;
    std::uint64_t bytesExpected = 0;  // 0 while it is not known
  };

  // Starts. `changed` is called on the job's thread: after each progress, and at the end.
  ArchiveJob(Kind kind, std::string folder, std::string archive, std::function<void()> changed);
  ArchiveJob(const ArchiveJob&) = delete;
  ArchiveJob& operator=(const ArchiveJob&) = delete;
  // Cancels and waits.
  ~ArchiveJob();

  void cancel() { isCancelled_ = true; }
  State state() const;
  bool isFinished() const { return isFinished_; }
  // What the call has reported. Called when it is finished.
  const FileSystem::Report& report() const { return report_; }

 private:
  void run(Kind kind, const std::string& folder, const std::string& archive);

  std::function<void()> changed_;
  mutable std::mutex mutex_;
  State state_;
  FileSystem::Report report_;
  std::atomic<bool> isCancelled_{false};
  std::atomic<bool> isFinished_{false};
  std::thread thread_;
};
