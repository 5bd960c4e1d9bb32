#pragma once
// The files that one operation has written.
//
// Some file systems take two names for one: `A` and `a`, or two spellings of the same accented
// letter. An operation that writes both would replace its own first file by the second and report
// two. Which names are one depends on the file system and its folder, so the names cannot show it.
// The identity of the existing file does.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/file_identity.h"

namespace platform {

// Remembers each file in 16 bytes, and has as many again for its growth.
class WrittenFiles {
 public:
  // The name under which a file was written, as a number of the caller.
  using Name = std::uint64_t;
  static constexpr Name kNone = 0;

  // Remembers the file under a name other than kNone, and forgets its former one.
  void add(const FileIdentity& file, Name name);
  // Returns the name under which the file was added, or kNone.
  Name nameOf(const FileIdentity& file) const;

 private:
  struct Slot {
    std::uint64_t file = 0;
    Name name = kNone;
  };

  void grow();

  // An open-addressing table. Its size is a power of two or 0.
  std::vector<Slot> slots_;
  std::size_t count_ = 0;
};

}  // namespace platform
