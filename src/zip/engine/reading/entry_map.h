#pragma once
// The positions of the entries of an archive, and finding entries by name.

#include <cstdint>
#include <string_view>
#include <vector>

#include "zip/engine/container/central_directory.h"

namespace zip_engine {

// Finds records by their exact names in the OEM code page. The first search walks over the records;
// the second one builds an index.
class NameIndex {
 public:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  // Returns the offset in the blob of the last record of that name, or kNone.
  std::size_t find(const CentralDirectory& directory, std::string_view name);

 private:
  void build(const CentralDirectory& directory);

  bool lookedBefore_ = false;
  std::vector<std::uint32_t> slots_;  // offset in the blob plus one; 0 is free
};

// Checks that an entry overlaps neither another one nor the directory. Where the directory was not
// found to be in order, the first check walks over the records, and the second one sorts the entries
// by position.
class EntryMap {
 public:
  // Finds the absolute position of the entry's local header, and the limit that the entry cannot
  // extend past: the start of the next entry, or of the directory. Returns false if another entry
  // overlaps its start.
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

// Reports whether all entries end before the directory, according to their records. An entry that
// claims to extend past it would overlap entries that are appended there.
bool endBeforeDirectory(const CentralDirectory& directory);

}  // namespace zip_engine
