#pragma once
// Paths of this library and of the other programs of the system.

#include <string>

namespace platform {

// Returns a path text as other programs of the system know it. A separator at its end stays. Empty
// if the text leads nowhere, as on an unmapped drive.
std::string hostPath(const char* text);

// Returns the path text for a path of another program. Empty if no text leads there.
std::string textOfHostPath(const char* path);

}  // namespace platform
