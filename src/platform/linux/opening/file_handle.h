#pragma once
// File handles: values that pack a descriptor, the granted rights, and the number
// of the opening. A table keeps the number of the last opening of each
// descriptor, so that a handle is known to be closed without a system call, even
// if its descriptor is in use again.

#include "platform/linux/opening/descriptor.h"
#include "platform/linux/win32_linux.h"

namespace platform::native {

// Makes a handle that does not own the descriptor; endOpening ends it. Returns
// INVALID_HANDLE_VALUE, with the error, if the table does not reach as far as the
// descriptor. `rights` are specific ones.
HANDLE makeFileHandle(int descriptor, DWORD rights);

// Does the same for a handle that owns the descriptor and its locks.
HANDLE makeFileHandle(Descriptor file, DWORD rights);

// Returns the descriptor of an open handle, or -1.
int descriptorOf(HANDLE handle);

// Ends the opening, so that all copies of the handle are closed ones. Does not
// close the descriptor.
void endOpening(HANDLE handle);

// Does the same for a handle that owns its descriptor, and returns that, or none if
// the handle is closed.
Descriptor takeDescriptor(HANDLE handle);

// True if the handle was opened with one of these specific rights.
bool grantsAny(HANDLE handle, DWORD rights);

}  // namespace platform::native
