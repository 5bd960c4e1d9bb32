// A path in relation to another, or to the folders above it. Nothing is
// resolved; only ParentDirectory asks the disk.

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

// Position behind the next separator from `start` on, or the text's size.
std::size_t behindSeparator(std::string_view text, std::size_t start) {
  for (std::size_t i = start; i < text.size(); i += characterLength(text, i)) {
    if (isSeparator(text[i])) return i + 1;
  }
  return text.size();
}

// Position behind the first two neighbouring separators, or npos.
std::size_t behindSeparatorPair(std::string_view text) {
  for (std::size_t i = 0; i + 1 < text.size(); i += characterLength(text, i)) {
    if (isSeparator(text[i]) && isSeparator(text[i + 1])) return i + 2;
  }
  return std::string_view::npos;
}

// Length up to and including the last backslash; the whole text if it has none.
std::size_t behindLastBackslash(std::string_view text) {
  std::size_t end = text.size();
  for (std::size_t i = 0; i < text.size(); i += characterLength(text, i)) {
    if (text[i] == '\\') end = i + 1;
  }
  return end;
}

std::size_t rootLength(std::string_view path) {
  const std::size_t server = behindSeparatorPair(path);
  if (server == std::string_view::npos) return behindSeparator(path, 0);
  const std::size_t share = behindSeparator(path, server);
  return behindSeparator(path, share);
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
  folder.truncate(behindLastBackslash(folder.view()));

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
