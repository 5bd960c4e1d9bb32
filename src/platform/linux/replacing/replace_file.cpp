#include "platform/replace_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string>

#include "platform/linux/metadata/attributes.h"
#include "platform/linux/names/native_path.h"
#include "platform/linux/opening/file_handle.h"
#include "platform/linux/replacing/durability.h"
#include "platform/linux/replacing/file_copy.h"
#include "platform/linux/replacing/replacement_file.h"
#include "platform/linux/replacing/version_name.h"
#include "platform/linux/system/last_error.h"

using namespace platform::native;

bool platform::replaceFile(FileHandle& opened, const char* path, const char* version,
                           const CopyProgress& progress) {
  const NativePath native(path);
  if (!native.valid()) return fail(native.error()) != FALSE;
  Source source;
  if (!openSource(version, source)) return false;
  Target target{.path = {}, .held = {}, .whenHeld = HeldTarget::Replace};
  const TargetState state = lockTarget(native, source, target);
  if (state == TargetState::Failed) return false;
  struct stat original;
  if (state != TargetState::Ready || fstat(descriptorOf(opened.get()), &original) != 0 ||
      !isSameFile(original, target.status)) {
    return fail(ERROR_SHARING_VIOLATION) != FALSE;
  }
  opened.reset();
  if (!copyOver(source, target, progress)) return fail(errorOnPath(native, errno)) != FALSE;
  commitNameOf(target.path.c_str());
  return true;
}

bool platform::canReplaceFile(HANDLE opened, const char* path) {
  const NativePath native(path);
  char real[PATH_MAX];
  if (!native.valid() || realpath(native.c_str(), real) == nullptr) return false;
  const Descriptor folder(::open(folderOf(real).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  return folder && canBeReplaced(folder.get(), nameOf(real), descriptorOf(opened));
}

void platform::removeUnfinishedVersion(HANDLE, const char* path) {
  const NativePath native(path);
  std::string file;
  struct stat status;
  if (!native.valid() || !findFile(native, file, status)) return;
  unlink((folderOf(file) + '/' + versionNameFor(nameOf(file.c_str()))).c_str());
}
