#include "platform/written_files.h"

#include <utility>

namespace platform {
namespace {

constexpr std::size_t kFirstSize = 16;

// Distinct for the files of one volume. Those of two volumes are as good as never equal.
std::uint64_t keyOf(const FileIdentity& file) {
  constexpr std::uint64_t kSpread = 0x9E3779B97F4A7C15;  // 2^64 divided by the golden ratio
  const std::uint64_t mixed = (file.index + (file.volume + 1) * kSpread) * kSpread;
  return mixed ^ mixed >> 32;
}

// Returns the slot that has the key, or the free one where it belongs. The table has a free slot.
template <typename Slots>
auto& find(Slots& slots, std::uint64_t key) {
  std::size_t at = key & (slots.size() - 1);
  while (slots[at].name != WrittenFiles::kNone && slots[at].file != key) {
    at = (at + 1) & (slots.size() - 1);
  }
  return slots[at];
}

}  // namespace

void WrittenFiles::add(const FileIdentity& file, Name name) {
  if ((count_ + 1) * 4 > slots_.size() * 3) grow();
  Slot& slot = find(slots_, keyOf(file));
  if (slot.name == kNone) ++count_;
  slot = {keyOf(file), name};
}

WrittenFiles::Name WrittenFiles::nameOf(const FileIdentity& file) const {
  return slots_.empty() ? kNone : find(slots_, keyOf(file)).name;
}

void WrittenFiles::grow() {
  std::vector<Slot> larger(slots_.empty() ? kFirstSize : slots_.size() * 2);
  for (const Slot& slot : slots_) {
    if (slot.name != kNone) find(larger, slot.file) = slot;
  }
  slots_ = std::move(larger);
}

}  // namespace platform
