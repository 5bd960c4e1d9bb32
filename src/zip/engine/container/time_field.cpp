#include "zip/engine/container/time_field.h"

#include <limits>
#include <optional>

#include "zip/engine/container/extra_field.h"

namespace zip_engine {
namespace {

constexpr std::uint16_t kUnixTimesId = 0x5455;
constexpr std::uint16_t kOldUnixTimesId = 0x5855;
constexpr std::uint16_t kFileTimesId = 0x000A;

// Of kUnixTimesId: the times that the local field has, in the order write, access, creation.
constexpr unsigned char kHasLastWrite = 1;
// Of kFileTimesId: the attribute that has these three times.
constexpr std::uint16_t kFileTimesTag = 1;
constexpr std::size_t kFileTimesSize = 24;

constexpr std::int64_t kTicksPerSecond = 10000000;
constexpr std::int64_t kSecondsTo1970 = 11644473600;

std::uint64_t ticksOf(const unsigned char* seconds) {
  const auto since1970 = static_cast<std::int32_t>(load32(seconds));
  return static_cast<std::uint64_t>((since1970 + kSecondsTo1970) * kTicksPerSecond);
}

std::uint64_t unixTimeIn(const unsigned char* extra, std::size_t size) {
  if (const auto block = findExtraBlock(extra, size, kUnixTimesId)) {
    const bool hasTime = block->size >= 5 && (block->data[0] & kHasLastWrite) != 0;
    if (hasTime) return ticksOf(block->data + 1);
  }
  // The time of the last access precedes it.
  const auto old = findExtraBlock(extra, size, kOldUnixTimesId);
  return old && old->size >= 8 ? ticksOf(old->data + 4) : 0;
}

// The block has four unused bytes, and then attributes, each with a tag and a size.
std::uint64_t fileTimeIn(const unsigned char* extra, std::size_t size) {
  const auto block = findExtraBlock(extra, size, kFileTimesId);
  if (!block || block->size < 4) return 0;
  const auto times = findExtraBlock(block->data + 4, block->size - 4, kFileTimesTag);
  if (!times || times->size < 8) return 0;
  const std::uint64_t ticks = load64(times->data);
  return ticks <= std::numeric_limits<std::int64_t>::max() ? ticks : 0;
}

}  // namespace

std::uint64_t lastWriteIn(const unsigned char* extra, std::size_t size) {
  const std::uint64_t exact = fileTimeIn(extra, size);
  return exact != 0 ? exact : unixTimeIn(extra, size);
}

void appendLastWrite(Bytes& extra, std::uint64_t lastWrite) {
  if (lastWrite == 0) return;
  const std::int64_t since1970 =
      static_cast<std::int64_t>(lastWrite / kTicksPerSecond) - kSecondsTo1970;
  if (since1970 == static_cast<std::int32_t>(since1970)) {
    append16(extra, kUnixTimesId);
    append16(extra, 5);
    extra.push_back(kHasLastWrite);
    append32(extra, static_cast<std::uint32_t>(since1970));
    return;
  }
  append16(extra, kFileTimesId);
  append16(extra, 4 + 4 + kFileTimesSize);
  append32(extra, 0);
  append16(extra, kFileTimesTag);
  append16(extra, kFileTimesSize);
  for (int i = 0; i < 3; ++i) append64(extra, lastWrite);
}

}  // namespace zip_engine
