#pragma once
// The states in which a power failure can leave a directory.
//
// What a file system keeps of the changes since the last commit of a file, in the model used here:
//  - each block of 4 KiB as it was at any moment since, or torn between two of them at 512 bytes;
//  - a block that the file was extended by, and that was not written: see LostBlocks;
//  - the size that the file had at any moment since;
//  - the names of the tree as they were at any moment since the tree's last commit.
// All these are independent of each other.

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "recorded_calls.h"

namespace power_loss {

// Contents by relative path.
using State = std::map<std::string, std::string>;

// What an extended file has in a block that was to be written and was not.
enum class LostBlocks {
  Zeros,  // ext4 with data=ordered or data=journal, XFS, Btrfs
  Stale,  // old content of the disk: ext2, ext4 with data=writeback
};

enum class Moment { DuringTheCall, AfterTheReturn };

// Visits each distinct state once for each moment at which it is possible. Where more than `limit`
// states are possible before a commit, visits `limit` of them, chosen with a fixed seed.
void forEachState(const std::vector<recording::Event>& events, LostBlocks lost, std::size_t limit,
                  const std::function<void(const State&, Moment)>& visit);

}  // namespace power_loss
