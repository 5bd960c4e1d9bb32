#include "platform/linux/listing/directory_stream.h"

#include <fcntl.h>
#include <unistd.h>

namespace platform::native {

DirectoryStream openDirectory(const char* path) {
  DirectoryStream stream(opendir(path));
  if (!stream || dirfd(stream.get()) > STDERR_FILENO) return stream;
  // Nothing has been read, so the position that both share is the beginning.
  return streamOf(Descriptor(fcntl(dirfd(stream.get()), F_DUPFD_CLOEXEC, STDERR_FILENO + 1)));
}

}  // namespace platform::native
