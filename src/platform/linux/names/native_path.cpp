#include "platform/linux/names/native_path.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/linux/names/dos_device.h"
#include "platform/linux/system/last_error.h"

namespace platform::native {
namespace {

bool isSeparator(char c) { return c == '\\' || c == '/'; }

bool isLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

std::size_t componentLength(std::string_view text, std::size_t start) {
  std::size_t end = start;
  while (end < text.size() && !isSeparator(text[end])) ++end;
  return end - start;
}

// Removes the prefix that switches off Windows' own limit of paths. `share` is
// the memory of the result for a share.
std::string_view withoutPrefix(std::string_view text, std::string& share) {
  if (!text.starts_with("\\\\?\\")) return text;
  text.remove_prefix(4);
  if (!text.starts_with("UNC\\")) return text;
  share = '\\';
  share += text.substr(3);
  return share;
}

// Removes a device from the start of `text` and sets its native folder, which is
// empty if there is none. Returns the error of an unmapped one.
DWORD takeDevice(std::string_view& text, std::string& folder) {
  if (text.size() >= 2 && isLetter(text[0]) && text[1] == ':') {
    const std::string_view drive = text.substr(0, 2);
    text.remove_prefix(2);
    if (!findDevice(drive, folder)) return ERROR_PATH_NOT_FOUND;
    // A drive without a separator counts from the current folder of the drive:
    // the process's own on the root's drive, the top of all others.
    if (folder == "/" && !text.empty() && !isSeparator(text[0])) folder.clear();
    return ERROR_SUCCESS;
  }
  // A slash with a backslash after it is the root, to which a separator was appended.
  const bool isServer = text.size() >= 3 && isSeparator(text[0]) && isSeparator(text[1]) &&
                        !isSeparator(text[2]) && text.substr(0, 2) != "/\\";
  if (isServer) {
    const std::size_t server = componentLength(text, 2);
    const std::size_t shareStart = 2 + server + 1;
    if (shareStart >= text.size()) return ERROR_BAD_NETPATH;
    const std::size_t share = componentLength(text, shareStart);
    std::string device = "UNC\\";
    device.append(text.substr(2, server)).append("\\").append(text.substr(shareStart, share));
    text.remove_prefix(shareStart + share);
    return findDevice(device, folder) ? ERROR_SUCCESS : ERROR_BAD_NETPATH;
  }
  return ERROR_SUCCESS;
}

}  // namespace

// Starts the path with the folder of a drive or share, the root, or nothing.
bool NativePath::takeRoot(std::string_view& text) {
  std::string folder;
  error_ = takeDevice(text, folder);
  if (!valid()) return false;
  if (folder.empty() && !text.empty() && isSeparator(text.front())) folder = "/";
  if (folder.size() >= sizeof(native_)) return false;
  isAbsolute_ = !folder.empty();
  rootSize_ = size_ = folder.copy(native_, folder.size());
  return true;
}

// False if there is no space for the component and a terminator.
bool NativePath::append(std::string_view component) {
  std::size_t end = size_;
  if (end > 0 && native_[end - 1] != '/') native_[end++] = '/';
  while (!component.empty()) {
    const bool isBackslash = component.starts_with(kBackslashInName);
    if (end + 1 >= sizeof(native_)) return false;
    native_[end++] = isBackslash ? '\\' : component.front();
    component.remove_prefix(isBackslash ? kBackslashInName.size() : 1);
  }
  size_ = end;
  return true;
}

void NativePath::removeLast() {
  while (size_ > rootSize_ && native_[size_ - 1] != '/') --size_;
  if (size_ > rootSize_) --size_;
}

NativePath::NativePath(const char* text) {
  native_[0] = '\0';
  if (text == nullptr || *text == '\0') {
    error_ = ERROR_PATH_NOT_FOUND;
    return;
  }
  std::string share;
  std::string_view rest = withoutPrefix(text, share);
  bool fits = takeRoot(rest);
  if (!valid()) return;
  while (fits && !rest.empty()) {
    const std::string_view component = rest.substr(0, componentLength(rest, 0));
    rest.remove_prefix(component.size());
    trailing_ = !rest.empty();
    if (trailing_) rest.remove_prefix(1);
    if (component.empty() || component == ".") continue;
    if (component != "..") {
      fits = append(component);
    } else if (size_ > rootSize_) {
      removeLast();
    } else if (!isAbsolute_) {
      fits = append(component);
      rootSize_ = size_;
    }
  }
  if (!fits) {
    error_ = ERROR_FILENAME_EXCED_RANGE;
    size_ = 0;
  }
  if (fits && size_ == 0) native_[size_++] = '.';
  if (size_ == 1 && native_[0] == '/') trailing_ = false;
  native_[size_] = '\0';
}

std::string folderOf(std::string_view path) {
  const std::size_t separator = path.rfind('/');
  if (separator == std::string_view::npos) return ".";
  return std::string(path.substr(0, separator == 0 ? 1 : separator));
}

const char* nameOf(const char* path) {
  const char* const separator = std::strrchr(path, '/');
  return separator == nullptr ? path : separator + 1;
}

std::size_t displayName(const char* native, char* buffer, std::size_t size) {
  std::string_view rest(native);
  // In a path, this character would be read as a backslash.
  if (rest.find(kBackslashInName) != std::string_view::npos) return 0;
  std::size_t length = 0;
  const auto put = [&](std::string_view piece) {
    if (size - length <= piece.size()) return false;
    length += piece.copy(buffer + length, piece.size());
    return true;
  };
  for (;;) {
    const std::string_view piece = rest.substr(0, rest.find('\\'));
    if (!put(piece)) return 0;
    if (piece.size() == rest.size()) break;
    if (!put(kBackslashInName)) return 0;
    rest.remove_prefix(piece.size() + 1);
  }
  buffer[length] = '\0';
  return length;
}

DWORD errorOnPath(const NativePath& path, int error) {
  if (error != ENOENT) return errorFromErrno(error);
  struct stat status;
  const std::string folder = folderOf({path.c_str(), path.size()});
  return stat(folder.c_str(), &status) == 0 ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
}

}  // namespace platform::native
