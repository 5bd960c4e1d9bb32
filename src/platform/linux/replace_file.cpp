#include "platform/replace_file.h"

#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>

#include "platform/linux/file_copy.h"
#include "platform/linux/file_handle.h"
#include "platform/linux/last_error.h"
#include "platform/linux/native_path.h"
#include "platform/unique_handle.h"

bool platform::replaceFile(HANDLE opened, const char* path, const char* version) {
  using namespace platform::native;
  const NativePath native(path);
  if (!native.valid()) return fail(native.error()) != FALSE;
  platform::FileHandle handle;
  Source source{.descriptor = -1, .status = {}};
  Target target{.path = {}, .held = {}};
  struct stat was;
  if (!openSource(version, handle, source) || !examine(native, source, false, target)) return false;
  if (fstat(descriptorOf(opened), &was) != 0 || !isSameFile(was, target.status)) {
    return fail(ERROR_SHARING_VIOLATION) != FALSE;
  }
  return copyTo(source, target) || fail(errorOnPath(native, errno)) != FALSE;
}

void platform::removeUnfinishedVersion(HANDLE opened, const char* path) {
  using namespace platform::native;
  const NativePath native(path);
  Target target{.path = {}, .held = {}};
  char real[PATH_MAX];
  if (!native.valid() || realpath(native.c_str(), real) == nullptr ||
      fstat(descriptorOf(opened), &target.status) != 0) {
    return;
  }
  target.path = real;
  unlink(temporaryName(target).c_str());
}
