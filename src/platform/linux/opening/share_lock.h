#pragma once
// Share modes between handles, of one process and of several, as open file
// description locks on bytes far beyond any file's end. share_lock.cpp describes
// the protocol.

#include "platform/linux/opening/descriptor.h"
#include "platform/linux/win32_linux.h"

namespace platform::native {

// Takes the locks of an opening with these specific rights and this share mode
// on `file`, which must be open for reading whatever the rights are. False
// if another holder's rights or share mode contradict it; no lock is left then.
// True without locks where the file system has none. `mayBeRemote` is false if the file is known to
// be on no network file system, or was just created; otherwise `file` can get another descriptor.
// The locks end when the descriptor is closed, or with the process.
bool acquireShare(Descriptor& file, DWORD rights, DWORD share, bool mayBeRemote);

// Reports whether acquireShare would succeed, without taking a lock.
bool shareAvailable(int descriptor, DWORD rights, DWORD share);

// Keeps everyone else from a file that was just created, while it is filled.
void holdUnfinished(Descriptor& file);

// Adds the denial of everything else to the locks of an opening that writes and
// denies writing alone. False, with nothing added, if another handle holds the file.
bool holdExclusively(int descriptor);

// True if the file system has these locks.
bool hasLocks(int descriptor);

// True if another handle holds the file, whatever it shares.
bool isHeldByOthers(int descriptor);

// True if another handle holds the file without sharing its deletion.
bool deletionDenied(int descriptor);

}  // namespace platform::native
