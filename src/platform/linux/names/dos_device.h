#pragma once
// The table of drives and shares that DefineDosDeviceA fills.

#include <string>
#include <string_view>

namespace platform::native {

// Finds the native folder of a device (`T:`, `UNC\srv\share`, in any letter
// case). False if it is not mapped. `C:` is the root unless it was mapped.
bool findDevice(std::string_view device, std::string& folder);

}  // namespace platform::native
