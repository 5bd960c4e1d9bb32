#include "paths.h"

#include <string_view>
#include <utility>

namespace {

constexpr bool kBackslashSeparates = std::filesystem::path::preferred_separator == '\\';
constexpr std::string_view kBackslashInName = "\uF05C";

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
  if constexpr (kBackslashSeparates) return path;
  std::string result = hasDrive(path) ? "/" : "";
  for (std::size_t i = hasDrive(path) ? 2 : 0; i < path.size();) {
    if (path.compare(i, kBackslashInName.size(), kBackslashInName) == 0) {
      result += '\\';
      i += kBackslashInName.size();
      continue;
    }
    const bool repeatsRoot = i == 2 && hasDrive(path) && isSeparator(path[i]);
    if (!repeatsRoot) result += path[i] == '\\' ? '/' : path[i];
    ++i;
  }
  return result;
}

std::filesystem::path systemPath(const std::string& path) {
  const std::string native = nativePath(path);
  return std::u8string(native.begin(), native.end());
}

std::string libraryPath(const std::string& path) {
  if constexpr (kBackslashSeparates) return path;
  std::string result;
  for (const char c : path) {
    if (c == '\\') {
      result += kBackslashInName;
    } else {
      result += c == '/' ? '\\' : c;
    }
  }
  return result;
}
