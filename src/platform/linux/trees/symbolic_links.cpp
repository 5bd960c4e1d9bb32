#include "platform/symbolic_links.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

#include "platform/linux/listing/found_entry.h"
#include "platform/linux/names/native_path.h"
#include "platform/linux/system/last_error.h"

using namespace platform::native;

bool platform::isFoundLink(HANDLE search) { return isLastFoundLink(search); }

bool platform::readLink(const char* path, std::string& target) {
  const NativePath native(path);
  if (!native.valid()) return fail(native.error()) != FALSE;
  char buffer[PATH_MAX];
  const ssize_t size = readlink(native.c_str(), buffer, sizeof(buffer));
  if (size < 0) return fail(errorOnPath(native, errno)) != FALSE;
  target.assign(buffer, static_cast<std::size_t>(size));
  return true;
}
