#pragma once
// Creation of folders, without the test that they can be used.

#include <string>
#include <vector>

namespace FileSystem::Detail {

// Creates the missing folders of a path, which may end in a separator. The root of the path
// (PathRoot) is neither created nor tested. Stops at the first folder that cannot be created. A
// file that has the name of a component fails only for the component after it. Returns false, with
// the error, on failure. Adds the paths of the folders that it has created, unless `created` is null.
bool makeFolders(const char* path, std::vector<std::string>* created = nullptr);

// Creates one folder that can be written to, unless it exists. Returns false, with the error, on
// failure. Adds its path as makeFolders() does.
bool makeFolder(const char* path, std::vector<std::string>* created = nullptr);

}  // namespace FileSystem::Detail
