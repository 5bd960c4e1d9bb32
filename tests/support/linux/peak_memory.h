#pragma once
// How much memory a piece of work holds at its peak.

#include <functional>

namespace support {

struct Peak {
  bool measured = false;   // false where the system does not tell
  bool succeeded = false;  // what the work gave
  long kibibytes = 0;      // resident at the peak, beyond what was held before
};

// Runs `work` in a process of its own, whose free memory went back to the system
// first, so that all that the work takes counts.
Peak peakOf(const std::function<bool()>& work);

}  // namespace support
