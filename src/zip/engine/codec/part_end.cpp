#include "zip/engine/codec/part_end.h"

#include <algorithm>
#include <array>

#include "zip/engine.h"
#include "zip/engine/container/format.h"

namespace zip_engine {

// What limits the work of a level in libdeflate, and what it costs on a processor of 2020.
struct LevelWork {
  std::size_t largest;     // part
  std::size_t stride;      // from sample to sample
  std::uint32_t depth;     // the most earlier positions that are compared; 0 if the work is limited
  std::uint32_t nice;      // the length of a match that ends the search
  std::uint32_t perByte;   // in ns, without the comparisons
  std::uint32_t perVisit;  // in 1/4 ns, for a position that is compared
};

namespace {

// The levels 1 to 9. The largest part of usual data takes 40 to 80 ms. Smaller ones would make level
// 9 larger than level 8.
constexpr LevelWork kLevels[] = {
    {4 << 20, 512 << 10, 0, 0, 0, 0},     {4 << 20, 512 << 10, 0, 0, 0, 0},
    {4 << 20, 512 << 10, 12, 14, 8, 3},   {4 << 20, 512 << 10, 16, 30, 8, 3},
    {4 << 20, 512 << 10, 16, 30, 6, 4},   {4 << 20, 512 << 10, 35, 65, 3, 5},
    {2 << 20, 128 << 10, 100, 130, 3, 5}, {1 << 20, 64 << 10, 300, 258, 12, 6},
    {1 << 20, 64 << 10, 600, 258, 15, 9},
};

// In nanoseconds.
constexpr std::uint64_t kMostWork = 75'000'000;

constexpr std::size_t kWorkSample = 3 << 10;
// A position of a full window, which has 32 KiB, has so many times the candidates that one of a
// sample has on average.
constexpr std::uint32_t kWindowShare = (64U << 10) / kWorkSample;

constexpr std::size_t kPrefix = 4;
constexpr std::size_t kLongestMatch = 258;

struct Candidates {
  std::uint16_t last = 0;
  std::uint16_t count = 0;
};

// What a greedy search finds that tries the last candidate only.
struct Matches {
  std::uint64_t count = 0;
  std::uint64_t bytes = 0;
  std::uint64_t visits = 0;  // of the candidates by a complete search at the first bytes of each
};

Matches matchesIn(const unsigned char* sample, const LevelWork& level) {
  constexpr unsigned kBits = 12;
  // A complete search tries two more positions for a longer match.
  constexpr std::uint32_t kSearches = 3;
  std::array<Candidates, 1 << kBits> table{};
  Matches matches;
  std::size_t end = 0;  // of the last match
  for (std::size_t at = 0; at + kPrefix <= kWorkSample; ++at) {
    const std::uint32_t prefix = load32(sample + at);
    Candidates& candidates = table[prefix * 0x1E35A7BDU >> (32 - kBits)];
    const std::size_t last = candidates.last;
    if (candidates.count != 0 && load32(sample + last) != prefix) candidates.count = 0;
    const std::uint32_t count = candidates.count++;
    candidates.last = static_cast<std::uint16_t>(at);
    if (at < end || count == 0) continue;
    std::size_t length = kPrefix;
    const std::size_t most = std::min(kWorkSample - at, kLongestMatch);
    while (length < most && sample[last + length] == sample[at + length]) ++length;
    end = at + length;
    ++matches.count;
    matches.bytes += length;
    if (length < level.nice) {
      matches.visits += std::uint64_t{kSearches} * std::min(count * kWindowShare, level.depth);
    }
  }
  return matches;
}

// Estimates the work for a stride, in ns, from the sample at its start. The formula is fitted to
// measurements. What the matches of a sample cost grows fast as they get shorter: then the search
// finds many that are equally long, the processor predicts few of its branches, and little is skipped.
std::uint64_t workOf(const unsigned char* sample, const LevelWork& level) {
  constexpr std::uint64_t kPerShortMatch = 35;
  const Matches matches = matchesIn(sample, level);
  std::uint64_t work = kWorkSample * level.perByte + matches.visits * level.perVisit / 4;
  if (matches.count != 0) {
    // The cube of the mean length less 3.5, in 1/512. No match has less than four bytes.
    const std::uint64_t excess = matches.bytes * 8 / matches.count - 28;
    work += (matches.count * kPerShortMatch + matches.visits * 5 / 2) * 512 /
            (excess * excess * excess);
  }
  return work * level.stride / kWorkSample;
}

// The default level of parts is 7.
constexpr std::size_t indexOf(int level) {
  return static_cast<std::size_t>(level == ZipLevelDefault ? 7 : std::clamp(level, 1, 9)) - 1;
}

}  // namespace

PartEnd::PartEnd(int level) : level_(kLevels[indexOf(level)]) {}

std::size_t PartEnd::largest() const { return level_.largest; }

std::size_t PartEnd::find(const unsigned char* part, std::size_t size) {
  if (level_.depth == 0) return 0;
  for (; checked_ + kWorkSample <= size; checked_ += level_.stride) {
    const std::uint64_t work = workOf(part + checked_, level_);
    if (checked_ % level_.largest == 0) work_ = 0;
    if (work_ != 0 && work_ + work > kMostWork) return std::min(checked_, level_.largest);
    work_ += work;
  }
  return 0;
}

}  // namespace zip_engine
