#pragma once
// Splitting and composing of paths by the rules of _splitpath and _makepath,
// bounded: no component goes beyond the limits that those functions state.

#include <cstddef>
#include <string_view>

#include "path/fixed_text.h"

namespace FileSystem::Detail {

// Longest directory, file name and extension, in bytes; longer ones are cut.
inline constexpr std::size_t kLongestComponent = 255;

// Size in bytes of a composed path, terminator included.
inline constexpr std::size_t kComposedBuffer = 261;

// Views of the text that was split.
struct PathParts {
  std::string_view drive;      // `C:`
  std::string_view directory;  // up to and including the last separator
  std::string_view name;       // without extension
  std::string_view extension;  // from its dot on
};

PathParts splitPath(std::string_view path);

// Adds the separator behind a directory and the dot before an extension where
// they are missing. Empty parts are left out, and what goes beyond the limit is
// cut.
FixedText<kComposedBuffer> composePath(const PathParts& parts);

}  // namespace FileSystem::Detail
