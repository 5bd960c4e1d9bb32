#pragma once
// One new entry into an open writer.

#include <string>
#include <vector>

#include "zip/zip_archive_private.h"

namespace zip {

// Adds bytes under a stored name with the present time (UTC). On failure the
// archive gets nothing. `password` is null for none.
bool addBytes(ZipWriter* writer, const std::vector<unsigned char>& bytes, const std::string& stored,
              const std::string& comment, const char* password);

// Adds a file with its last write time (local) and attributes; reads it in
// blocks. A file that cannot be read to its end is a failure.
bool addFile(ZipWriter* writer, const char* source, const std::string& stored, const char* comment,
             const char* password);

}  // namespace zip
