// The folder for temporary files, and free names in a folder.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/linux/names/native_path.h"
#include "platform/linux/opening/descriptor.h"
#include "platform/linux/system/last_error.h"
#include "platform/linux/win32_linux.h"

namespace platform::native {
namespace {

// A folder text of this length leaves space for a name within MAX_PATH.
constexpr std::size_t kLongestFolder = MAX_PATH - 14;
constexpr std::size_t kLongestPrefix = 3;

bool isFolder(const char* native) {
  struct stat status;
  return stat(native, &status) == 0 && S_ISDIR(status.st_mode);
}

// Folder, prefix, number in hexadecimal digits and the extension.
std::string composed(const char* folder, const char* prefix, UINT number) {
  std::string name = folder;
  if (name.back() != '\\') name += '\\';
  name.append(prefix, strnlen(prefix, kLongestPrefix));
  char tail[16];
  std::snprintf(tail, sizeof(tail), "%X.TMP", number);
  return name += tail;
}

// Creates a file that its owner can read and write, whatever the umask is. False,
// with errno, if the name is in use or on failure.
bool createFile(const std::string& name) {
  constexpr mode_t kMode = S_IRUSR | S_IWUSR;
  const Descriptor file(
      ::open(NativePath(name.c_str()).c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kMode));
  struct stat status;
  const bool isMasked =
      file && fstat(file.get(), &status) == 0 && (status.st_mode & kMode) != kMode;
  if (isMasked) fchmod(file.get(), kMode);
  return static_cast<bool>(file);
}

// Returns the first number to be tried, another one for each process and call.
UINT firstNumber() {
  static std::atomic<UINT> calls{0};
  const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
  const auto mixed = static_cast<UINT>(now >> 10) ^ static_cast<UINT>(getpid()) * 40503U;
  return mixed + calls++;
}

}  // namespace
}  // namespace platform::native

using namespace platform::native;

DWORD GetTempPathA(DWORD size, char* buffer) {
  const char* const wanted = std::getenv("TMPDIR");
  const char* const native =
      wanted != nullptr && *wanted == '/' && isFolder(wanted) ? wanted : "/tmp";
  char text[PATH_MAX];
  std::size_t length = displayName(native, text, sizeof(text) - 1);
  if (length == 0) return 0;
  if (text[length - 1] != '/') text[length++] = '\\';
  if (length >= size) return static_cast<DWORD>(length + 1);
  std::memcpy(buffer, text, length);
  buffer[length] = '\0';
  return static_cast<DWORD>(length);
}

UINT GetTempFileNameA(const char* folder, const char* prefix, UINT unique, char* buffer) {
  const NativePath path(folder);
  if (!path.valid()) return static_cast<UINT>(fail(ERROR_DIRECTORY));
  if (std::strlen(folder) > kLongestFolder) return static_cast<UINT>(fail(ERROR_BUFFER_OVERFLOW));
  if (!isFolder(path.c_str())) return static_cast<UINT>(fail(ERROR_DIRECTORY));
  if (prefix == nullptr) prefix = "";

  constexpr UINT kNumbers = 0xFFFF;
  if (unique != 0) {
    const std::string name = composed(folder, prefix, unique & kNumbers);
    std::memcpy(buffer, name.c_str(), name.size() + 1);
    return unique;
  }
  const UINT first = firstNumber();
  for (UINT i = 0; i < kNumbers; ++i) {
    const UINT number = (first + i) % kNumbers + 1;
    const std::string name = composed(folder, prefix, number);
    if (createFile(name)) {
      std::memcpy(buffer, name.c_str(), name.size() + 1);
      return number;
    }
    if (errno != EEXIST) return static_cast<UINT>(failWithErrno());
  }
  return static_cast<UINT>(fail(ERROR_FILE_EXISTS));
}
