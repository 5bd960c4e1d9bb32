#pragma once

#include <string>

namespace FileSystem::Detail {

// Returns a folder text that ends in `\`. A trailing `/` counts as no separator.
inline std::string withBackslash(std::string folder) {
  if (!folder.ends_with('\\')) folder += '\\';
  return folder;
}

}  // namespace FileSystem::Detail
