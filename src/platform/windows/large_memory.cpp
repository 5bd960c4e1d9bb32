#include "platform/large_memory.h"

// Large pages take a privilege that users do not have.
void platform::expectFilling(void*, std::size_t) {}
