#pragma once
// Temporary files that killed processes left.

#include <string>
#include <string_view>

namespace platform {

// The prefix of the names that the library lets GetTempFileNameA make.
inline constexpr char kTemporaryPrefix[] = "~za";

// Deletes files beside `newest`, a file that was just created: those of the pattern whose names
// `isTemporary` returns true for, if they were last written a day before it and no process holds
// them. A process does so once an hour for a directory.
void deleteAbandonedFiles(const std::string& newest, const char* pattern,
                          bool (*isTemporary)(std::string_view name));

// The same for the files that GetTempFileNameA named with kTemporaryPrefix.
void deleteAbandonedTemporaryFiles(const std::string& newest);

}  // namespace platform
