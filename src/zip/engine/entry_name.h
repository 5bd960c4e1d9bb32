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

// Reports whether the names of a local header and of a central record are those of one entry: they
// may differ in the direction of slashes and in the encoding of characters outside ASCII. The
// central name is the one that counts.
bool isSameName(std::string_view local, std::string_view central);

}  // namespace zip_engine
