#pragma once
// Questions that the attributes of a path answer. A path without attributes answers false.

#include "platform/win32.h"

namespace FileSystem::Detail {

inline bool hasAttribute(const char* path, DWORD attribute) {
  const DWORD attributes = GetFileAttributesA(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & attribute) != 0;
}

// True for a directory and for a link to one.
inline bool isDirectory(const char* path) { return hasAttribute(path, FILE_ATTRIBUTE_DIRECTORY); }

// True for a link to a directory.
inline bool isLink(const char* path) { return hasAttribute(path, FILE_ATTRIBUTE_REPARSE_POINT); }

}  // namespace FileSystem::Detail
