#pragma once
// Entry names. Callers of the engine give and get them in the OEM code page; an
// archive holds a name outside ASCII as UTF-8 and flags it, so that every system
// reads it alike. A name without the flag is taken for OEM, as it stands.

#include <string>
#include <string_view>

#include "zip/engine/central_directory.h"

namespace zip_engine {

struct ArchiveName {
  std::string bytes;
  bool isUtf8 = false;  // to be flagged
};

ArchiveName archiveName(const std::string& oemName);

// The name of an entry as callers get it. `converted` holds it where it is not
// the archive's own bytes.
std::string_view oemName(const CentralRecord& record, std::string& converted);

}  // namespace zip_engine
