#pragma once
// Share modes between handles, of one process and of many, as open file
// description locks on bytes far beyond any file's end.

#include "platform/linux/win32_linux.h"

namespace platform::native {

enum class ShareResult { Granted, Violation };

// Takes the locks for an open with `access` (GENERIC_READ, GENERIC_WRITE) and
// `share` mode on `descriptor`, which is open for reading as well whatever
// `access` says. Where the file system has no locks the answer is Granted. The
// locks go with the last close of the descriptor; nothing is left on Violation.
ShareResult acquireShare(int descriptor, DWORD access, DWORD share);

// Whether acquireShare would grant that, without taking a lock.
bool shareAvailable(int descriptor, DWORD access, DWORD share);

// As acquireShare for a file that was just made, in two calls if it is opened
// with all access and no sharing and nobody was faster. False, with nothing
// left, where acquireShare has to decide.
bool holdNew(int descriptor, DWORD access, DWORD share);

// Takes the locks of an open with all access and no sharing on a file that was
// just made, so that nobody else can hold it.
void holdAlone(int descriptor);

// Whether somebody holds the file without delete sharing.
bool deletionDenied(int descriptor);

}  // namespace platform::native
