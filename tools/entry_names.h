#pragma once
// Names of entries that programs take for one another.

#include <string>

// The name with `\` as its only separator. Programs take both separators for one.
std::string withBackslashes(std::string name);
