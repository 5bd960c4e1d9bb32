#pragma once
// What the entry points of programs and DLLs share.

#include <windows.h>

extern "C" {

using Initialiser = void(__cdecl*)();
using CInitialiser = int(__cdecl*)();

// Constructs the static objects of the module; false if one cannot be.
bool vesk_begin_module();
// Calls what the module passed to atexit, the destructors of its static objects among them.
void __cdecl vesk_end_module();

}  // extern "C"
