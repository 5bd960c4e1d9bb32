#pragma once

#include <string>
#include <string_view>

namespace FileSystem::Detail {

// Returns a directory with a trailing `\`. A trailing `/` does not count.
inline std::string withBackslash(std::string_view folder) {
  std::string text(folder);
  if (!text.ends_with('\\')) text += '\\';
  return text;
}

}  // namespace FileSystem::Detail
