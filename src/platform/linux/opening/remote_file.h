#pragma once
// Files of file systems that a server provides.

namespace platform::native {

// Reports whether the open file is on another machine, or served by another process. True also if
// its file system cannot be determined: what remote files need is slower, but right for all files.
bool isRemoteFile(int descriptor);

}  // namespace platform::native
