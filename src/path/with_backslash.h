#pragma once

#include <string>

namespace FileSystem::Detail {

// Returns a directory with a trailing `\`. A trailing `/` does not count.
inline std::string withBackslash(std::string folder) {
  if (!folder.ends_with('\\')) folder += '\\';
  return folder;
}

}  // namespace FileSystem::Detail
