#pragma once
// What `add` adds to an archive.

#include <string>
#include <vector>

#include "commands.h"

// A file and the entry that it becomes.
struct Source {
  std::string path;
  std::string name;
};

// The files of the request, those of directories below the directory's own name. A file that is
// given twice occurs once, and the archive itself is left out. Reports each that cannot be read.
// Throws Failure if two have the same name.
std::vector<Source> sourcesOf(const AddRequest& request, Output& output);
