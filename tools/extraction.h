#pragma once
// Why an entry could not be extracted.

#include <string>
#include <string_view>

#include "archive.h"

// True if the name, put after a directory, leads outside it: it begins with a
// root or a drive, or has a component `..`.
bool leavesDirectory(std::string_view name);

// The reason why the entry could not be extracted to the file `target`.
std::string extractionFailure(Archive& archive, const Entry& entry, const std::string& target,
                              bool hasPassword);
