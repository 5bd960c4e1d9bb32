#pragma once
// Extraction of entries into a directory, with what the user reads of it.

#include <filesystem/archive.h>

#include <cstddef>
#include <string>
#include <vector>

#include "output.h"
#include "progress.h"

struct Unpacked {
  std::size_t files = 0;  // extracted
  std::size_t kept = 0;   // existing files that were kept
  std::vector<FileSystem::Entry> withoutPassword;
};

// Extracts entries into a directory. Reports each that fails, and continues, but leaves those that
// need a password to the caller if there is none. Throws Failure if the directory cannot be used.
Unpacked unpackEntries(const FileSystem::Archive& archive,
                       const std::vector<FileSystem::Entry>& entries, const std::string& directory,
                       FileSystem::Options options, Progress& progress, Output& output);
