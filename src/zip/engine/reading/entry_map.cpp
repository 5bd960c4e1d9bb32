#include "zip/engine/reading/entry_map.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <limits>
#include <string>

#include "zip/engine/container/entry_name.h"

namespace zip_engine {
namespace {

// Calls `visit(record, offset)` for each record until it returns false. The record has no sizes.
template <typename Visit>
void forEachName(const CentralDirectory& directory, Visit visit) {
  for (std::size_t offset = 0; offset < directory.blob.size();) {
    const CentralRecord record{.bytes = directory.blob.data() + offset};
    if (!visit(record, offset)) return;
    offset += record.size();
  }
}

// Calls `visit(record)` for each record until it returns false.
template <typename Visit>
void forEachRecord(const CentralDirectory& directory, Visit visit) {
  forEachName(directory, [&](const CentralRecord&, std::size_t offset) {
    return visit(recordAt(directory, offset));
  });
}

// Returns the position that follows a size, which may be false: the sum does not overflow.
std::uint64_t positionAfter(std::uint64_t position, std::uint64_t size) {
  constexpr std::uint64_t kLargest = std::numeric_limits<std::int64_t>::max();
  return size > kLargest - position ? kLargest : position + size;
}

std::uint64_t startOf(const CentralDirectory& directory, const CentralRecord& record) {
  return positionAfter(directory.base, record.localOffset);
}

// Returns the least possible end of an entry. Its local extra field and its descriptor are not
// known here. Its local name has `nameLength` bytes, or none if that is not known either.
std::uint64_t leastEndOf(const CentralDirectory& directory, const CentralRecord& record,
                         std::size_t nameLength = 0) {
  const std::uint64_t data = positionAfter(startOf(directory, record), kLocalSize + nameLength);
  return positionAfter(data, record.compressedSize);
}

}  // namespace

std::size_t NameIndex::find(const CentralDirectory& directory, std::string_view name) {
  NameMatcher matcher(name);
  if (!lookedBefore_) {
    lookedBefore_ = true;
    std::size_t found = kNone;
    forEachName(directory, [&](const CentralRecord& record, std::size_t offset) {
      if (matcher.matches(record)) found = offset;
      return true;
    });
    return found;
  }
  if (slots_.empty()) build(directory);
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = std::hash<std::string_view>{}(name)&mask;
  for (; slots_[slot] != 0; slot = (slot + 1) & mask) {
    const std::size_t offset = slots_[slot] - 1;
    if (matcher.matches(recordAt(directory, offset))) return offset;
  }
  return kNone;
}

void NameIndex::build(const CentralDirectory& directory) {
  slots_.resize(std::bit_ceil(static_cast<std::size_t>(directory.entryCount) * 2));
  const std::size_t mask = slots_.size() - 1;
  std::string converted;
  std::string other;
  forEachName(directory, [&](const CentralRecord& record, std::size_t offset) {
    const std::string_view name = oemName(record, converted);
    std::size_t slot = std::hash<std::string_view>{}(name)&mask;
    for (; slots_[slot] != 0; slot = (slot + 1) & mask) {
      // Only the last of equal names is kept; the others would make long chains.
      if (oemName(recordAt(directory, slots_[slot] - 1), other) == name) break;
    }
    slots_[slot] = static_cast<std::uint32_t>(offset + 1);
    return true;
  });
}

bool EntryMap::locate(const CentralDirectory& directory, const CentralRecord& record,
                      std::uint64_t& start, std::uint64_t& limit) {
  start = startOf(directory, record);
  limit = directory.position;
  if (directory.isInOrder) {
    const std::size_t next =
        static_cast<std::size_t>(record.bytes - directory.blob.data()) + record.size();
    if (next < directory.blob.size()) {
      limit = std::min(limit, startOf(directory, recordAt(directory, next)));
    }
    return true;
  }
  if (!lookedBefore_) {
    lookedBefore_ = true;
    bool apart = true;
    forEachRecord(directory, [&](const CentralRecord& other) {
      const std::uint64_t otherStart = startOf(directory, other);
      if (otherStart > start) {
        limit = std::min(limit, otherStart);
      } else if (other.bytes != record.bytes && leastEndOf(directory, other) > start) {
        apart = false;
      }
      return apart;
    });
    return apart;
  }
  if (places_.empty()) build(directory);
  const auto place = std::lower_bound(
      places_.begin(), places_.end(), start,
      [](const Place& candidate, std::uint64_t wanted) { return candidate.start < wanted; });
  const auto next = std::next(place);
  if (next != places_.end()) {
    if (next->start == start) return false;
    limit = std::min(limit, next->start);
  }
  return place == places_.begin() || std::prev(place)->leastEnd <= start;
}

void EntryMap::build(const CentralDirectory& directory) {
  places_.reserve(static_cast<std::size_t>(directory.entryCount));
  forEachRecord(directory, [&](const CentralRecord& record) {
    places_.push_back({startOf(directory, record), leastEndOf(directory, record)});
    return true;
  });
  std::sort(places_.begin(), places_.end(),
            [](const Place& a, const Place& b) { return a.start < b.start; });
  std::uint64_t reached = 0;
  for (Place& place : places_) {
    reached = std::max(reached, place.leastEnd);
    place.leastEnd = reached;
  }
}

bool endBeforeDirectory(const CentralDirectory& directory) {
  bool allBefore = true;
  forEachRecord(directory, [&](const CentralRecord& record) {
    // In doubt nothing is appended, so that no entry is overwritten.
    allBefore = leastEndOf(directory, record, record.nameLength()) <= directory.position;
    return allBefore;
  });
  return allBefore;
}

}  // namespace zip_engine
