#pragma once
// What a new version takes over from the file that it replaces.
//
// The owner, the group, the permissions, the access control list and the user attributes are those
// of the old file. Set-id bits, capabilities and the signatures of security modules are not: they
// were given to the old content.
//
// The new version is created for its owner alone, and no step may let anyone open it who cannot
// open the old file. So the owner and the group come first. The access control list, which the new
// file may have inherited from its directory, is replaced or removed before the permissions are
// set: their group bits are the mask of that list, and would put it into force.

#include <sys/stat.h>

namespace platform::native {

// Gives `to`, open and not accessible to others, the owner and the group in `old`. False, with
// errno, on failure.
bool carryOwner(const struct stat& old, int to);

// Reports whether carryAccess can give `to` the access control list of `from`. `to` stays
// inaccessible to others.
bool canCarryAccess(int from, int to, bool isRemote);

// Gives `to` the user attributes and the access control list of `from`, and the permissions in
// `old` without set-id bits and without `removed`. False, with errno, on failure.
bool carryAccess(int from, const struct stat& old, mode_t removed, int to, bool isRemote);

// Gives `to` the user attributes of `from` and the permissions `mode`, and no access control list,
// since one could permit more than they say. False, with errno, on failure.
bool setAccess(int from, mode_t mode, int to);

// Reports whether a file has an access control list.
bool hasAccessList(int file);

// True if errno, after one of these failed, shows that the file system or the owner does not permit
// the step.
bool cannotCarry(int error);

}  // namespace platform::native
