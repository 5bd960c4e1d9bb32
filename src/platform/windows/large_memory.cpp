#include "platform/large_memory.h"

// Large pages need a privilege that users do not have.
void platform::expectFilling(void*, std::size_t) {}
