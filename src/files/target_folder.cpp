#include "files/target_folder.h"

#include <vector>

#include "files/attributes.h"
#include "path/characters.h"
#include "platform/win32.h"
#include "reporting/reasons.h"

namespace FileSystem::Detail {
namespace {

// Returns the text up to the end of its last component.
std::string_view withoutEndSeparators(std::string_view path) {
  std::size_t end = 0;
  for (std::size_t i = 0; i < path.size(); i += characterLength(path, i)) {
    if (!isSeparator(path[i])) end = i + characterLength(path, i);
  }
  return path.substr(0, end);
}

// Returns the part before the last component, without separators at its end.
std::string_view parentOf(std::string_view path) {
  std::size_t start = 0;
  for (std::size_t i = 0; i < path.size(); i += characterLength(path, i)) {
    if (isSeparator(path[i])) start = i;
  }
  return withoutEndSeparators(path.substr(0, start));
}

// Creates one folder. Reason::Missing if its parent is missing.
Reason createOne(const std::string& path) {
  if (CreateDirectoryA(path.c_str(), nullptr)) return Reason::None;
  const DWORD error = GetLastError();
  // A root, which always exists, is refused for other reasons.
  if (isDirectory(path.c_str())) return Reason::None;
  return error == ERROR_ALREADY_EXISTS ? Reason::NotAFolder : reasonOfError(error);
}

}  // namespace

std::string folderText(const char* folder) {
  const std::string_view text(folder);
  if (text.empty()) return ".\\";
  return std::string(withoutEndSeparators(text)) + '\\';
}

Reason createFolder(const std::string& folder) {
  const std::string whole(withoutEndSeparators(folder));
  if (isDirectory(folder.c_str())) return Reason::None;
  std::vector<std::string> missing{whole};
  Reason reason = createOne(whole);
  while (reason == Reason::Missing) {
    const std::string parent(parentOf(missing.back()));
    if (parent.empty() || parent.size() == missing.back().size()) return reason;
    missing.push_back(parent);
    reason = createOne(parent);
  }
  // The last one is there now.
  for (missing.pop_back(); reason == Reason::None && !missing.empty(); missing.pop_back()) {
    reason = createOne(missing.back());
  }
  return reason;
}

}  // namespace FileSystem::Detail
