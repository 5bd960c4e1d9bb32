#include "platform/host_paths.h"

#include <string_view>

#include "platform/linux/names/native_path.h"

namespace platform {
namespace {

// Reports whether a relative path would be read as that of a drive, or of the null device.
bool isSpecial(const std::string& path) {
  return (path.size() > 1 && path[1] == ':') || lstrcmpiA(path.c_str(), "NUL") == 0;
}

}  // namespace

std::string hostPath(const char* text) {
  const native::NativePath path(text);
  std::string result(path.c_str(), path.size());
  if (path.valid() && path.hadTrailingSeparator()) result += '/';
  return result;
}

std::string textOfHostPath(const char* path) {
  std::string_view rest(path);
  if (rest.find(native::kBackslashInName) != std::string_view::npos) return {};
  // Two separators would begin the name of a server.
  while (rest.starts_with("//")) rest.remove_prefix(1);
  std::string text;
  for (const char c : rest) {
    if (c == '\\') {
      text += native::kBackslashInName;
    } else {
      text += c == '/' ? '\\' : c;
    }
  }
  return isSpecial(text) ? ".\\" + text : text;
}

}  // namespace platform
