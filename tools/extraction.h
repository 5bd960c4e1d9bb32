#pragma once
// Why an entry could not be extracted.

#include <string>

#include "archive.h"

// The reason why the entry could not be extracted to the file `target`. Without a result of the
// library the entry is read for that.
std::string extractionFailure(Archive& archive, const Entry& entry, const std::string& target,
                              bool hasPassword);
std::string extractionFailure(ZipArchive::Extraction::Result result, const Entry& entry,
                              const std::string& target, bool hasPassword);
