#include "platform/linux/names/null_device.h"

#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>

#include <cerrno>
#include <string_view>
#include <utility>

#include "platform/linux/opening/access_rights.h"
#include "platform/linux/opening/existing_file.h"
#include "platform/linux/opening/file_handle.h"
#include "platform/linux/system/last_error.h"

namespace platform::native {

bool isNullDevice(const char* text) {
  constexpr std::string_view kDevices = "\\\\.\\";
  if (text == nullptr) return false;
  const bool isPrefixed = std::string_view(text).starts_with(kDevices);
  if (strcasecmp(isPrefixed ? text + kDevices.size() : text, "NUL") != 0) return false;
  struct stat status;
  return isPrefixed || lstat(text, &status) != 0;
}

HANDLE openNullDevice(DWORD rights) {
  const int mode = !writes(rights) ? O_RDONLY : reads(rights) ? O_RDWR : O_WRONLY;
  Descriptor device(openRetrying(AT_FDCWD, "/dev/null", mode));
  if (!device) return invalidHandle(errorFromErrno(errno));
  SetLastError(ERROR_SUCCESS);
  return makeFileHandle(std::move(device), rights);
}

}  // namespace platform::native
