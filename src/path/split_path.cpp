// Splitting and composing of paths, in one pass and without a buffer for each
// component.

#include "path/split_path.h"

#include "path/characters.h"

namespace FileSystem::Detail {

PathParts splitPath(std::string_view path) {
  const std::size_t driveSize = path.size() >= 2 && path[1] == ':' ? 2 : 0;
  const std::string_view rest = path.substr(driveSize);

  std::size_t nameStart = 0;
  std::size_t dot = std::string_view::npos;
  for (std::size_t i = 0; i < rest.size(); i += characterLength(rest, i)) {
    if (isSeparator(rest[i])) {
      nameStart = i + 1;
      dot = std::string_view::npos;
    } else if (rest[i] == '.') {
      dot = i;
    }
  }
  const std::size_t nameEnd = dot == std::string_view::npos ? rest.size() : dot;

  return {path.substr(0, driveSize), rest.substr(0, nameStart).substr(0, kLongestComponent),
          rest.substr(nameStart, nameEnd - nameStart).substr(0, kLongestComponent),
          rest.substr(nameEnd).substr(0, kLongestComponent)};
}

FixedText<kComposedBuffer> composePath(const PathParts& parts) {
  FixedText<kComposedBuffer> path;
  if (!parts.drive.empty()) {
    path.append(parts.drive.substr(0, 1));
    path.append(":");
  }
  path.append(parts.directory);
  if (!parts.directory.empty() && !isSeparator(parts.directory.back())) path.append("\\");
  path.append(parts.name);
  if (!parts.extension.empty() && parts.extension.front() != '.') path.append(".");
  path.append(parts.extension);
  return path;
}

}  // namespace FileSystem::Detail
