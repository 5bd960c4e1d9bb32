#include "platform/linux/durability.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/descriptor.h"
#include "platform/linux/native_path.h"

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
