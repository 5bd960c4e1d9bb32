#pragma once
// File handles: values that pack a descriptor, the granted rights, and the number
// of the opening. A table keeps the number of the last opening of each
// descriptor, so that a handle is known to be closed without a system call, even
// if its descriptor is in use again.

#include "platform/linux/win32_linux.h"

namespace platform::native {

// Returns INVALID_HANDLE_VALUE, with the error, if the table does not reach as
// far as the descriptor, which stays open. `rights` are specific ones.
HANDLE makeFileHandle(int descriptor, DWORD rights);

// Returns the descriptor of an open handle, or -1.
int descriptorOf(HANDLE handle);

// Ends the opening, so that all copies of the handle are closed ones. Returns the
// descriptor, for the caller to close, or -1 if the handle is closed.
int endOpening(HANDLE handle);

// True if the handle was opened with one of these specific rights.
bool grantsAny(HANDLE handle, DWORD rights);

}  // namespace platform::native
