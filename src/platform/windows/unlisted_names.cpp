#include "platform/unlisted_names.h"

std::vector<std::string> platform::unlistedNames(HANDLE) { return {}; }
