#pragma once
// Changes of archives, as the commands make them.

#include <filesystem/archive_change.h>

#include <string>

#include "commands.h"
#include "password.h"

// The options for new entries.
FileSystem::Options optionsOf(const NewPassword& password, const CompressionRequest& compression);

// Throws the Failure of an archive that could not be changed, which none of the requested changes
// has caused.
[[noreturn]] void throwFailure(const FileSystem::Report& report, const std::string& zip);
