#pragma once
// Threads, as the program needs them of each system.

// Returns the number of processors that the program may use, at least 1.
unsigned int usableProcessors();

// Makes threads that are started while an object exists leave requests to end the program, such as
// signals, to the others.
class StartWithoutRequests {
 public:
  StartWithoutRequests();
  StartWithoutRequests(const StartWithoutRequests&) = delete;
  StartWithoutRequests& operator=(const StartWithoutRequests&) = delete;
  ~StartWithoutRequests();
};
