#pragma once
// The sizes of the parts in which a large entry is deflated (part_deflater.h).
//
// Callers report progress between two parts, and the deflater cannot be interrupted in one. Its work
// for a byte varies by a factor of 100: it compares each position with earlier ones that have the
// same four bytes, up to a limit of the level. In text and programs few do, or one of the first is a
// long match, which ends the search and is skipped. In random letters of a small alphabet, such as
// genetic sequences, hundreds do, and all matches are short. So the work is estimated from samples,
// and a part ends where it would exceed a limit.
//
//   | sample, 3 KiB |        | sample, 3 KiB |        | ...
//   ^ a part may end before each sample, one for each 64 to 512 KiB
//
// The sizes depend on the bytes and the level alone, not on the blocks in which the bytes arrive.

#include <cstddef>
#include <cstdint>

namespace zip_engine {

struct LevelWork;

class PartEnd {
 public:
  // A level is -1 for the default, or 1 to 9.
  explicit PartEnd(int level);

  // The size of a part whose work is within the limit.
  std::size_t largest() const;
  // Begins with the next part.
  void begin() { checked_ = 0; }
  // Checks the bytes that have arrived since the start of the part. Returns where it ends, if its work
  // would exceed the limit with the bytes after that; else 0. Those past the largest size are checked
  // as another part, and if that has an end, this one ends at its largest size.
  std::size_t find(const unsigned char* part, std::size_t size);

 private:
  const LevelWork& level_;
  std::size_t checked_ = 0;  // bytes whose work is known
  std::uint64_t work_ = 0;   // of those since the last multiple of the largest size, in ns
};

}  // namespace zip_engine
