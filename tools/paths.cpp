#include "paths.h"

#include <filesystem/path.h>
#include <filesystem/trees.h>

#include <utility>

namespace {

bool hasDrive(const std::string& path) { return path.find(':') == 1; }

}  // namespace

std::string withoutEndSeparators(std::string path) {
  while (path.size() > 1 && isSeparator(path.back()) && path[path.size() - 2] != ':') {
    path.pop_back();
  }
  return path;
}

std::string withBackslash(const std::string& directory) {
  std::string text = withoutEndSeparators(directory);
  if (!text.empty() && isSeparator(text.back())) text.pop_back();
  return text + '\\';
}

std::string creatablePath(const std::string& path) {
  const bool isRooted = !path.empty() && (isSeparator(path[0]) || hasDrive(path));
  std::string result = isRooted ? "" : ".\\";
  for (const char c : path) {
    if (result.size() > 1 && isSeparator(c) && isSeparator(result.back())) continue;
    result += c;
  }
  return withoutEndSeparators(std::move(result));
}

std::string nativePath(const std::string& path) {
  const std::string native = FileSystem::nativePath(path.c_str());
  return native.empty() ? path : native;
}

std::string lastComponent(const std::string& path) {
  const std::size_t separator = path.find_last_of("\\/");
  return separator == std::string::npos ? FileSystem::extractFilename(path)
                                        : path.substr(separator + 1);
}

std::filesystem::path systemPath(const std::string& path) {
  const std::string native = FileSystem::nativePath(path.c_str());
  return std::u8string(native.begin(), native.end());
}

std::string libraryPath(const std::string& path) { return FileSystem::libraryPath(path.c_str()); }
