#include <sys/stat.h>

#include <cerrno>

#include "platform/linux/names/native_path.h"
#include "platform/linux/system/last_error.h"
#include "platform/linux/win32_linux.h"

using namespace platform::native;

BOOL CreateDirectoryA(const char* text, SECURITY_ATTRIBUTES*) {
  const NativePath path(text);
  if (!path.valid()) return fail(path.error());
  constexpr mode_t kAll = 0777;
  if (mkdir(path.c_str(), kAll) == 0) return TRUE;
  // Only a folder on the way can be missing.
  return fail(errno == ENOENT ? ERROR_PATH_NOT_FOUND : errorFromErrno(errno));
}
