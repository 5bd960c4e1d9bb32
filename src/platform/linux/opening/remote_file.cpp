#include "platform/linux/opening/remote_file.h"

#include <sys/vfs.h>

namespace platform::native {

bool isRemoteFile(int descriptor) {
  struct statfs system;
  if (fstatfs(descriptor, &system) != 0) return true;
  switch (static_cast<unsigned>(system.f_type)) {
    case 0x6969:      // NFS
    case 0x517B:      // SMB
    case 0xFF534D42:  // CIFS
    case 0xFE534D42:  // SMB 2
    case 0x01021997:  // 9P
    case 0x65735546:  // FUSE
    case 0x5346414F:  // AFS
    case 0x6B414653:  // AFS, the kernel's own
    case 0x00C36400:  // Ceph
    case 0x73757245:  // Coda
    case 0x564C:      // NetWare
      return true;
    default:
      return false;
  }
}

}  // namespace platform::native
