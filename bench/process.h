#pragma once
// Running another program.

#include <string>
#include <vector>

#include "harness.h"

namespace bench {

// Runs a program to its end, in a folder if one is told, its output unseen.
// Throws std::runtime_error if it cannot be run or does not exit with 0.
Cost runProgram(const std::vector<std::string>& command, const std::string& folder = {});

// The first line that a program writes which holds a digit; empty if there is
// none. For the versions of the peers.
std::string versionLine(const std::string& command);

}  // namespace bench
