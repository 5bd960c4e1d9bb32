// Splitting and composing of paths, in one pass and without a buffer for each
// component.

#include "path/split_path.h"

#include "path/characters.h"

namespace FileSystem::Detail {

namespace {

// Where the name begins, and the last dot in it or npos.
struct NameStart {
  std::size_t name = 0;
  std::size_t dot = std::string_view::npos;
};

NameStart findName(std::string_view text) {
  NameStart found;
  if (isSingleByte(text)) {
    for (std::size_t i = text.size(); i > 0 && found.name == 0; --i) {
      if (isSeparator(text[i - 1])) {
        found.name = i;
      } else if (text[i - 1] == '.' && found.dot == std::string_view::npos) {
        found.dot = i - 1;
      }
    }
    return found;
  }
  for (std::size_t i = 0; i < text.size(); i += characterLength(text, i)) {
    if (isSeparator(text[i])) {
      found = {.name = i + 1, .dot = std::string_view::npos};
    } else if (text[i] == '.') {
      found.dot = i;
    }
  }
  return found;
}

}  // namespace

PathParts splitPath(std::string_view path) {
  const std::size_t driveSize = path.size() >= 2 && path[1] == ':' ? 2 : 0;
  const std::string_view rest = path.substr(driveSize);
  const auto [nameStart, dot] = findName(rest);
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
