#pragma once
// The peak memory of a piece of work.

#include <functional>

namespace support {

struct Peak {
  bool measured = false;   // false if the system does not report it
  bool succeeded = false;  // the result of the work
  long kibibytes = 0;      // resident at the peak, beyond those before
};

// Runs `work` in a process of its own, whose free memory went back to the system
// first, so that all that the work takes counts.
Peak peakOf(const std::function<bool()>& work);

}  // namespace support
