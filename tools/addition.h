#pragma once
// What `add` adds to an archive.

#include <string>
#include <vector>

#include "commands.h"

// A file, link or directory, and the entry that it becomes.
struct Source {
  enum class Kind { kFile, kLink, kDirectory };

  std::string path;
  std::string name;
  Kind kind = Kind::kFile;
};

// What the request names, and all below directories under the directory's own name. A file that is
// given twice occurs once, and the archive itself is left out. Reports each that cannot be read.
// Throws Failure if two have the same name.
std::vector<Source> sourcesOf(const AddRequest& request, Output& output);
