#pragma once
// Splitting and composing paths by the rules of _splitpath and _makepath, with components cut to
// the limits of those functions.

#include <cstddef>
#include <string_view>

#include "path/fixed_text.h"

namespace FileSystem::Detail {

// The longest directory, file name and extension, in bytes.
inline constexpr std::size_t kLongestComponent = 255;

// Size of the buffer for a composed path in bytes, including the terminator.
inline constexpr std::size_t kComposedBuffer = 261;

// Views of parts of a path.
struct PathParts {
  std::string_view drive;      // `C:`
  std::string_view directory;  // including the last separator
  std::string_view name;       // without extension
  std::string_view extension;  // with its dot
};

// Returns views of `path`.
PathParts splitPath(std::string_view path);

// Composes a path. Adds a `\` after a directory and a dot before an extension where they are
// missing, and cuts the path to the size of its buffer.
FixedText<kComposedBuffer> composePath(const PathParts& parts);

}  // namespace FileSystem::Detail
