#pragma once
// System calls that fail on request. The library's calls resolve to functions of the test program,
// which forward them or fail.

#include <functional>
#include <string>

namespace failing {

enum class Fault {
  OneCall,   // the n-th call fails with EIO
  FullDisk,  // the n-th call that needs disk space writes half, and all later ones fail with ENOSPC
  Interruption,  // something else happens before the n-th call and each later one
  HalfRead,      // the n-th `read` returns half of what is requested, the next one fails with EIO
};

// Counts the calls of the thread that creates it, during its lifetime, and fails the n-th one,
// beginning with 1; 0 fails none. Only one object at a time.
class Failing {
 public:
  // `interruption` runs with calls that do not fail.
  Failing(Fault fault, int number, std::function<void()> interruption = {});
  Failing(const Failing&) = delete;
  Failing& operator=(const Failing&) = delete;
  ~Failing();

  // The number of calls that could have failed.
  int count() const;
  // The first call that failed, with its path if it has one; empty if none failed.
  std::string failed() const;
  // `w` and the size for each `write`, `c` for each `fdatasync`, in their order.
  std::string writesAndCommits() const;
};

// Returns the number of threads that this process, and the one that it was forked from, have
// started.
int startedThreads();

}  // namespace failing
