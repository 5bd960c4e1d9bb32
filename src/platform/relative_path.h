#pragma once
// Paths below a directory, taken from names that are not trusted.

#include <algorithm>
#include <string_view>

namespace platform {

// True if a component of the path is "..". Such a path can escape the directory.
inline bool hasParentComponent(std::string_view path) {
  while (!path.empty()) {
    const std::string_view component = path.substr(0, path.find_first_of("\\/"));
    if (component == "..") return true;
    path.remove_prefix(std::min(component.size() + 1, path.size()));
  }
  return false;
}

}  // namespace platform
