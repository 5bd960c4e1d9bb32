#include "platform/folder_identity.h"

#include <sys/stat.h>

#include "platform/posix/native_path.h"

namespace platform {

bool folderIdentity(const char* path, FolderIdentity& identity) {
  const posix::NativePath native(path);
  struct stat status;
  if (!native.valid() || stat(native.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
    return false;
  }
  identity = {.volume = status.st_dev, .index = status.st_ino};
  return true;
}

}  // namespace platform
