#pragma once
// The name on Windows' file systems, which ignore case.
#include <windows.h>
