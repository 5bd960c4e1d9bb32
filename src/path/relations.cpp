// Comparing paths, and finding their parents and roots. No path is resolved, and only
// ParentDirectory accesses the disk.

#include <filesystem/files.h>
#include <filesystem/path.h>

#include <string_view>

#include "path/characters.h"
#include "path/fixed_text.h"
#include "path/lower_case.h"
#include "path/split_path.h"

namespace FileSystem {
namespace {

using Detail::characterLength;
using Detail::isSeparator;

// Returns the position after the first separator at or after `start`, or the size of the text.
std::size_t afterSeparator(std::string_view text, std::size_t start) {
  for (std::size_t i = start; i < text.size(); i += characterLength(text, i)) {
    if (isSeparator(text[i])) return i + 1;
  }
  return text.size();
}

// Returns the position after the first two adjacent separators, or npos.
std::size_t afterSeparatorPair(std::string_view text) {
  for (std::size_t i = 0; i + 1 < text.size(); i += characterLength(text, i)) {
    if (isSeparator(text[i]) && isSeparator(text[i + 1])) return i + 2;
  }
  return std::string_view::npos;
}

// Returns the position after the last backslash, or the size of a text without one.
std::size_t afterLastBackslash(std::string_view text) {
  std::size_t end = text.size();
  for (std::size_t i = 0; i < text.size(); i += characterLength(text, i)) {
    if (text[i] == '\\') end = i + 1;
  }
  return end;
}

std::size_t rootLength(std::string_view path) {
  const std::size_t server = afterSeparatorPair(path);
  if (server == std::string_view::npos) return afterSeparator(path, 0);
  const std::size_t share = afterSeparator(path, server);
  return afterSeparator(path, share);
}

}  // namespace

bool pathEqual(const std::string& first, const std::string& second) {
  return Detail::equalIgnoringCase(first, second);
}

std::string subPath(const std::string& base, const std::string& path) {
  if (base.size() >= path.size()) return path;
  const std::string_view start = std::string_view(path).substr(0, base.size());
  return Detail::equalIgnoringCase(base, start) ? path.substr(base.size()) : path;
}

CString ParentDirectory(const char* path) {
  Detail::PathText folder(path);
  if (folder.view().ends_with('\\')) folder.truncate(folder.view().size() - 1);
  if (FileExists(folder.c_str()) != 0) {
    const Detail::PathParts parts = Detail::splitPath(folder.view());
    folder = Detail::PathText(Detail::composePath({parts.drive, parts.directory, {}, {}}).view());
  }
  folder.truncate(afterLastBackslash(folder.view()));

  std::string parent(folder.view());
  if (!parent.empty() && parent.back() != '\\') parent += '\\';
  return CString(parent.c_str());
}

void PathRoot(const char* path, CString& root) {
  Detail::PathText text(path);
  text.truncate(rootLength(text.view()));
  root = CString(text.c_str());
}

}  // namespace FileSystem
