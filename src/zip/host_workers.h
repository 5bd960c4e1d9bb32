#pragma once
// The threads that a host lends to a call.

#include <filesystem/options.h>

#include <cstddef>
#include <functional>

#include "reporting/progress_relay.h"

namespace zip {

// Runs work by the executor of the options. The options and the progress outlive the object.
class HostWorkers {
 public:
  HostWorkers(const FileSystem::Options& options, FileSystem::Detail::ProgressRelay& progress)
      : options_(options), progress_(progress) {}

  // How many tasks can run at the same time; 1 if the host lends no thread.
  std::size_t count() const { return options_.executor() ? options_.workers() : 1; }

  // Runs task(0) to task(count - 1), at most one for each worker, and returns when all have ended. A
  // task that throws, or that the host leaves out, has left its work to the caller. Returns false if
  // the call is cancelled, also by an exception of the executor.
  bool run(std::size_t count, const std::function<void(std::size_t index)>& task);

 private:
  const FileSystem::Options& options_;
  FileSystem::Detail::ProgressRelay& progress_;
};

}  // namespace zip
