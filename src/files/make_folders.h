#pragma once
// Creation of folders, without the test that they can be used.

namespace FileSystem::Detail {

// Creates the missing folders of a path, which may end in a separator. The root of the path
// (PathRoot) is neither created nor tested. Stops at the first folder that cannot be created. A
// file that has the name of a component fails only for the component after it. Returns false, with
// the error, on failure.
bool makeFolders(const char* path);

// Creates one folder that can be written to, unless it exists. Returns false, with the error, on failure.
bool makeFolder(const char* path);

}  // namespace FileSystem::Detail
