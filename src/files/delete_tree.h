#pragma once
// Deletion of a folder with all that it has.

#include <filesystem/results.h>

#include <string>

#include "files/tree_call.h"

namespace FileSystem::Detail {

// Deletes a folder, whose path ends in a separator, or a link to one itself. Returns why the folder
// could not be listed.
Reason deleteTree(const std::string& folder, TreeCall& call);

}  // namespace FileSystem::Detail
