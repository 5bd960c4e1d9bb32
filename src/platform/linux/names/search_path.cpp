// Finding a file along the platform's search path.

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/names/native_path.h"
#include "platform/linux/system/last_error.h"
#include "platform/linux/win32_linux.h"

namespace platform::native {
namespace {

// Appends the folders of a list like PATH.
void appendList(std::vector<std::string>& folders, std::string_view list) {
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(':'), list.size());
    if (end != 0) folders.emplace_back(list.substr(0, end));
    list.remove_prefix(std::min(end + 1, list.size()));
  }
}

std::string programFolder() {
  char path[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof(path));
  if (length <= 0) return {};
  const std::string_view program(path, static_cast<std::size_t>(length));
  return std::string(program.substr(0, program.rfind('/')));
}

// Returns the folders to search, as path texts.
std::vector<std::string> searchedFolders() {
  std::vector<std::string> native{programFolder()};
  char current[PATH_MAX];
  if (getcwd(current, sizeof(current)) != nullptr) native.emplace_back(current);
  if (const char* const list = std::getenv("PATH")) appendList(native, list);
  std::vector<std::string> folders;
  for (const std::string& folder : native) {
    char text[PATH_MAX];
    if (displayName(folder.c_str(), text, sizeof(text)) != 0) folders.emplace_back(text);
  }
  return folders;
}

// Folders count too, as on Windows.
bool exists(const std::string& text) {
  const NativePath path(text.c_str());
  struct stat status;
  return path.valid() && !path.hadTrailingSeparator() && stat(path.c_str(), &status) == 0;
}

}  // namespace
}  // namespace platform::native

using namespace platform::native;

// Searches the program's folder, the current folder, and PATH. No other list of folders can be
// given, nor an extension.
DWORD SearchPathA(const char*, const char* name, const char*, DWORD size, char* buffer,
                  char** filePart) {
  if (name == nullptr || *name == '\0') return static_cast<DWORD>(fail(ERROR_INVALID_PARAMETER));
  const std::string file = name;
  std::string found;
  const bool isAbsolute = file[0] == '\\' || file[0] == '/' || file.find(':') == 1;
  if (isAbsolute) {
    if (exists(file)) found = file;
  } else {
    for (const std::string& folder : searchedFolders()) {
      std::string candidate = folder;
      if (candidate.back() != '\\' && candidate.back() != '/') candidate += '\\';
      candidate += file;
      if (!exists(candidate)) continue;
      found = std::move(candidate);
      break;
    }
  }
  if (found.empty()) return static_cast<DWORD>(fail(ERROR_FILE_NOT_FOUND));
  if (found.size() >= size) return static_cast<DWORD>(found.size() + 1);
  std::memcpy(buffer, found.c_str(), found.size() + 1);
  if (filePart != nullptr) *filePart = buffer + found.find_last_of("\\/") + 1;
  return static_cast<DWORD>(found.size());
}
