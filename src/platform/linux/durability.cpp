#include "platform/linux/durability.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "platform/linux/descriptor.h"

namespace platform::native {
bool commitContent(int descriptor) {
  // Some file systems have nothing to commit and report that as EINVAL.
  return fdatasync(descriptor) == 0 || errno == EINVAL;
}

void commitNameOf(const char* path) {
  const std::string text = path;
  const std::string directory = text.substr(0, text.rfind('/') + 1) + '.';
  const Descriptor opened(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (opened) fsync(opened.get());
}

}  // namespace platform::native
