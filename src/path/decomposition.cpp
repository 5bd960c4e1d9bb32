// Taking one path apart, and giving it another extension. Pure text: what the
// functions differ in is which parts they take and how they trim them.

#include <filesystem/path.h>

#include <string_view>

#include "path/split_path.h"

namespace FileSystem {
namespace {

constexpr std::string_view kBlank = " ";
constexpr std::string_view kWhiteSpace = " \r\n\t";

std::string_view trimmed(std::string_view text, std::string_view set) {
  const std::size_t first = text.find_first_not_of(set);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(set) + 1 - first);
}

// Only the text in front of the first zero byte is a path.
Detail::PathParts split(const std::string& path) { return Detail::splitPath(path.c_str()); }

std::string joined(std::string_view first, std::string_view second) {
  std::string text;
  text.reserve(first.size() + second.size());
  return text.append(first).append(second);
}

}  // namespace

std::string extractDrive(const std::string& path) {
  return std::string(trimmed(split(path).drive, kWhiteSpace));
}

std::string extractPath(const std::string& path) {
  // Both parts stand side by side at the path's start.
  const Detail::PathParts parts = split(path);
  const std::size_t size = parts.drive.size() + parts.directory.size();
  return std::string(trimmed(std::string_view(path).substr(0, size), kWhiteSpace));
}

std::string extractFilename(const std::string& path) {
  const Detail::PathParts parts = split(path);
  return joined(parts.name, trimmed(parts.extension, kBlank));
}

std::string extractName(const std::string& path) {
  return std::string(trimmed(split(path).name, kBlank));
}

std::string extractExtension(const std::string& path) {
  return std::string(trimmed(split(path).extension, kBlank));
}

std::string replaceExtension(const std::string& path, const std::string& extension) {
  Detail::PathParts parts = split(path);
  parts.extension = extension.c_str();
  const auto composed = Detail::composePath(parts);
  return std::string(trimmed(composed.view(), kBlank));
}

}  // namespace FileSystem
