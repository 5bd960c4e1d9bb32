#pragma once
// System calls that the library makes in this program: a record of some, and failures of others.

#include <string>

namespace system_calls {

// `w` and the size for a write, `c` for a commit.
inline std::string record;
// The number of the call that fails, counted from now on; 0 fails none.
inline int failingWrite = 0;
inline int failingRead = 0;
// The next directory that is created is created by another process just before.
inline bool isCreatedBefore = false;

}  // namespace system_calls
