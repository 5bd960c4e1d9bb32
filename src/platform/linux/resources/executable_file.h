#pragma once
// Resources of executables in the published PE format of Windows. No field of the file is trusted.

#include <cstdint>
#include <vector>

namespace platform::native {

enum class ResourceResult { Found, NoExecutable, NoSuchType, Damaged };

// Reads the first resource of a type, in its first language.
ResourceResult readResource(const char* path, std::uint16_t type, std::vector<unsigned char>& data);

}  // namespace platform::native
