#pragma once
// The names of files that are to take the place of others.
//
// A new version has a name of its own before it gets the target's: until it is complete where each
// file needs a name, otherwise for an instant. A process that is killed then leaves it. The name is
// made from the target's, so that the next replacement of the same target finds what was left:
//
//     .~copyHASH.tmp           the first choice, HASH being 16 digits
//     .~copyHASH-PID-N.tmp     if that is in use, or no lock keeps out another process
//
// Earlier releases named it `.~copyINODE.tmp`, after the target's inode, or `.~copyPID-N.tmp`.

#include <string>
#include <string_view>

namespace platform::native {

// Returns the first choice for a target of this name. Processes that replace the same target share
// it, so it is for those that have locked the target.
std::string versionNameFor(std::string_view target);

// Returns another name for each process and call. In another container or after a restart a process
// can have the same identifier, so the name may be in use.
std::string uniqueVersionNameFor(std::string_view target);

// True for all names above, those of earlier releases too.
bool isVersionName(std::string_view name);

}  // namespace platform::native
