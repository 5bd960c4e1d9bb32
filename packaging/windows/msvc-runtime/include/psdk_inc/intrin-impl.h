#pragma once
// clang has the compiler's built-in functions that mingw-w64 defines here for GCC.
#include <intrin.h>
