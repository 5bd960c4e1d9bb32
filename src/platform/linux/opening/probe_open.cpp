#include "platform/probe_open.h"

#include <fcntl.h>

#include "platform/linux/listing/found_entry.h"
#include "platform/linux/names/native_path.h"
#include "platform/linux/names/null_device.h"
#include "platform/linux/opening/access_rights.h"
#include "platform/linux/opening/existing_file.h"

using namespace platform::native;

bool platform::probeOpen(const char* text, DWORD access, DWORD share) {
  if (isNullDevice(text)) return true;
  const NativePath path(text);
  if (!path.valid() || path.hadTrailingSeparator()) return false;
  return probeExisting(AT_FDCWD, path.c_str(), specificRights(access), share);
}

bool platform::probeFound(HANDLE search, const char* path) {
  constexpr DWORD kShare = FILE_SHARE_READ | FILE_SHARE_WRITE;
  const FoundEntry found = lastFound(search);
  if (found.name == nullptr) return probeOpen(path, GENERIC_READ, kShare);
  const auto probe = found.isRegular ? probeRegular : probeExisting;
  return probe(found.folder, found.name, FILE_READ_DATA, kShare);
}
