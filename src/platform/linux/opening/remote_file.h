#pragma once
// Files of file systems that a server provides, and whose locks differ from local ones.

#include <sys/stat.h>

#include "platform/linux/opening/descriptor.h"

namespace platform::native {

// False if the file is certainly on this machine: only such files are on a device.
bool mayBeRemote(const struct stat& status);

// Reports whether the open file is on another machine, or served by another process. True also if
// its file system cannot be determined: what remote files need is slower, but right for all files.
bool isRemoteFile(int descriptor);

// Opens a file on SMB once more, in a way that the client does not join with an earlier opening of
// this machine. It joins openings of equal flags, and locks that are taken through joined ones do
// not conflict. Two processes that do this in the same moment can still be joined. On other file
// systems, and without /proc, the file stays open through the descriptor that it has. No lock may
// have been taken through that.
void openApart(Descriptor& file);

}  // namespace platform::native
