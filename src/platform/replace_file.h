#pragma once
// Replaces a file that was read before by a new version.

#include "platform/copy_file.h"
#include "platform/unique_handle.h"

namespace platform {

// Replaces the file at `path` by a copy of the file `version`. Fails if `path` is no
// longer the file that is open in `opened`, so that a file which another process
// put there is not lost. `opened` is closed before the last step, since an open file
// cannot be replaced on Windows, nor on SMB; on Windows it fails too if the file was
// changed in between. A false result of `progress` ends the copying unless the file
// is being overwritten in place.
bool replaceFile(FileHandle& opened, const char* path, const char* version,
                 const CopyProgress& progress = {});

// Reports whether a complete new file can take the place of the file at `path`, which is open in
// `opened`, and keep its owner, group, permissions and access control list. False also if the file
// has several hard links, which would no longer be one file, and if its directory does not accept
// new files. Creates a file for a moment, and deletes it.
bool canReplaceFile(HANDLE opened, const char* path);

// Deletes the temporary file of a process that was killed in replaceFile. The file
// at `path` is open in `opened`, which denies writing, so no other process is
// replacing it now.
void removeUnfinishedVersion(HANDLE opened, const char* path);

}  // namespace platform
