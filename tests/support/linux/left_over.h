#pragma once
// What a test leaves.

#include <map>
#include <string>

namespace support {

// Returns the open descriptors of this process, with the path of each.
std::map<int, std::string> openDescriptors();

}  // namespace support
