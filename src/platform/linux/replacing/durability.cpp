#include "platform/linux/replacing/durability.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/names/native_path.h"
#include "platform/linux/opening/descriptor.h"

namespace platform::native {
bool commitContent(int descriptor) {
  // Some file systems have nothing to commit and report that as EINVAL.
  return fdatasync(descriptor) == 0 || errno == EINVAL;
}

void commitNameOf(const char* path) {
  const Descriptor opened(::open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (opened) fsync(opened.get());
}

}  // namespace platform::native
