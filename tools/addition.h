#pragma once
// What `add` adds to an archive, and what it replaces.

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

// Reports whether a source replaces an entry, of which another program may have written the name
// with `/` for `\`. Throws Failure if the library would replace another entry too.
bool replacesEntry(const std::vector<Source>& sources, const std::vector<std::string>& names);
