#pragma once
// Making a chain of folders, without the test that the result can be used.

namespace FileSystem::Detail {

// Makes what is missing of the folders of `path`, with or without trailing
// separator; null counts as empty. The root of the path (PathRoot) is neither
// made nor tested. True unless the platform refused to make a folder; a file
// that has the name of a piece is noticed only at the next piece.
bool makeFolders(const char* path);

// Creates one directory that can be written to, unless it exists. Returns false on failure.
bool makeFolder(const char* path);

}  // namespace FileSystem::Detail
