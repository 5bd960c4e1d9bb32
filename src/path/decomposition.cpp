// Splitting a path and replacing its extension. Each function has its own trim: spaces only, or all
// white space.

#include <filesystem/path.h>

#include <string_view>

#include "path/split_path.h"
#include "path/zero_terminated.h"

namespace FileSystem {
namespace {

bool isSpace(char c) { return c == ' '; }

bool isWhiteSpace(char c) { return c == ' ' || c == '\r' || c == '\n' || c == '\t'; }

template <typename Test>
std::string_view trimmed(std::string_view text, Test test) {
  while (!text.empty() && test(text.front())) text.remove_prefix(1);
  while (!text.empty() && test(text.back())) text.remove_suffix(1);
  return text;
}

Detail::PathParts split(const std::string& path) {
  return Detail::splitPath(Detail::upToZero(path));
}

}  // namespace

std::string extractDrive(const std::string& path) {
  return std::string(trimmed(split(path).drive, isWhiteSpace));
}

std::string extractPath(const std::string& path) {
  // Drive and directory are adjacent at the start of the path. Joining them with
  // boost::format("%s%s") would take 15 times as many instructions.
  const Detail::PathParts parts = split(path);
  const std::size_t size = parts.drive.size() + parts.directory.size();
  return std::string(trimmed(std::string_view(path).substr(0, size), isWhiteSpace));
}

std::string extractFilename(const std::string& path) {
  const Detail::PathParts parts = split(path);
  const std::string_view extension = trimmed(parts.extension, isSpace);
  // Both are adjacent in the path unless the name was cut. Joining them with
  // boost::format("%s%s") would take 20 times as many instructions.
  if (parts.name.data() + parts.name.size() == extension.data()) {
    return std::string(parts.name.data(), parts.name.size() + extension.size());
  }
  return std::string(parts.name).append(extension);
}

std::string extractName(const std::string& path) {
  return std::string(trimmed(split(path).name, isSpace));
}

std::string extractExtension(const std::string& path) {
  return std::string(trimmed(split(path).extension, isSpace));
}

std::string replaceExtension(const std::string& path, const std::string& extension) {
  Detail::PathParts parts = split(path);
  parts.extension = Detail::upToZero(extension);
  const auto composed = Detail::composePath(parts);
  return std::string(trimmed(composed.view(), isSpace));
}

}  // namespace FileSystem
