#include "platform/file_identity.h"

#include <sys/stat.h>

#include <cerrno>

#include "platform/linux/names/native_path.h"

namespace platform {

bool fileIdentity(const char* path, FileIdentity& identity) {
  const native::NativePath native(path);
  struct stat status;
  if (!native.valid() || stat(native.c_str(), &status) != 0) {
    return false;
  }
  identity = {.volume = status.st_dev, .index = status.st_ino};
  return true;
}

bool isNoFile(const char* path) {
  const native::NativePath native(path);
  struct stat status;
  if (!native.valid()) return false;
  if (stat(native.c_str(), &status) == 0) return !S_ISREG(status.st_mode);
  return errno == ENOENT || errno == ELOOP;
}

}  // namespace platform
