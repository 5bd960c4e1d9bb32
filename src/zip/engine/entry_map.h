#pragma once
// Where the entries of an archive lie, and finding them by name.

#include <cstdint>
#include <string_view>
#include <vector>

#include "zip/engine/central_directory.h"

namespace zip_engine {

// Finds records by their exact names in the OEM code page. The index is built when a second name is
// looked for, because for one a walk is cheaper.
class NameIndex {
 public:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  // Returns the offset in the blob of the first record of that name, or kNone.
  std::size_t find(const CentralDirectory& directory, std::string_view name);

 private:
  void build(const CentralDirectory& directory);

  bool lookedBefore_ = false;
  std::vector<std::uint32_t> slots_;  // offset in the blob plus one; 0 is free
};

// Tells whether an entry lies apart from all others and from the directory. The
// entries are sorted by position when a second one is asked for.
class EntryMap {
 public:
  // Gives the absolute position of the entry's local header, and the limit
  // behind which the entry cannot go on: the start of the next entry, or of the
  // directory. False if another entry lies over its start.
  bool locate(const CentralDirectory& directory, const CentralRecord& record, std::uint64_t& start,
              std::uint64_t& limit);

 private:
  struct Place {
    std::uint64_t start;
    std::uint64_t leastEnd;  // of this and all places before it
  };

  void build(const CentralDirectory& directory);

  bool lookedBefore_ = false;
  std::vector<Place> places_;
};

// Whether all entries end in front of the directory, as far as the records tell:
// one that claims what is behind it would lie over entries that come there.
bool endInFrontOfDirectory(const CentralDirectory& directory);

}  // namespace zip_engine
