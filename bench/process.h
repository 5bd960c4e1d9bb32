#pragma once
// Other programs.

#include <string>
#include <vector>

#include "harness.h"

namespace bench {

// Runs a program to its end, in `folder` if that is not empty, and discards its output. Throws
// std::runtime_error if it cannot be run or does not exit with 0.
Cost runProgram(const std::vector<std::string>& command, const std::string& folder = {});

// Returns the first line of a program's output that contains a digit, or the empty text. For the
// versions of the peers.
std::string versionLine(const std::string& command);

}  // namespace bench
