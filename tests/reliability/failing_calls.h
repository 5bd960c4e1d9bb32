#pragma once
// System calls that fail when a test wants them to. The library's calls resolve
// to functions of the test program, which pass them on or fail them.

#include <string>

namespace failing {

enum class Fault {
  OneCall,   // the n-th call fails with EIO, all others go through
  FullDisk,  // from the n-th call that needs room on, all of them fail with ENOSPC
  Kill,      // the process is killed in front of the n-th call
  HalfRead,  // the n-th `read` gives half of what it is asked for, the next fails with EIO
};

// Counts the calls of its lifetime and fails the n-th, beginning with 1; 0 fails
// none. One at a time.
class Failing {
 public:
  Failing(Fault fault, int number);
  Failing(const Failing&) = delete;
  Failing& operator=(const Failing&) = delete;
  ~Failing();

  // Calls that the fault could have hit.
  int count() const;
  // The first call that failed, with its path if it has one; empty if none did.
  std::string failed() const;
};

}  // namespace failing
