// Comparing paths, and finding their parents and roots. No path is resolved, and only
// ParentDirectory accesses the disk.

#include <filesystem/files.h>
#include <filesystem/path.h>

#include <algorithm>
#include <string_view>

#include "path/characters.h"
#include "path/fixed_text.h"
#include "path/lower_case.h"
#include "path/split_path.h"

namespace FileSystem {
namespace {

using Detail::findCharacter;
using Detail::isSeparator;

// Returns the position after the first separator at or after `start`, or the size of the text.
std::size_t afterSeparator(std::string_view text, std::size_t start) {
  const std::size_t separator =
      findCharacter(text, start, [=](std::size_t i) { return isSeparator(text[i]); });
  return std::min(separator + 1, text.size());
}

// Returns the position after the last backslash, or the size of a text without one.
std::size_t afterLastBackslash(std::string_view text) {
  std::size_t end = text.size();
  findCharacter(text, 0, [&](std::size_t i) {
    if (text[i] == '\\') end = i + 1;
    return false;
  });
  return end;
}

// Returns the size of the root: of a server and its share if there are two adjacent separators.
std::size_t rootLength(std::string_view path) {
  const std::size_t root = afterSeparator(path, 0);
  std::size_t server = root;
  while (server < path.size() && !isSeparator(path[server])) server = afterSeparator(path, server);
  if (server == path.size()) return root;
  const std::size_t share = afterSeparator(path, server + 1);
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
