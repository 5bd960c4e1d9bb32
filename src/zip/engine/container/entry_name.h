#pragma once
// Entry names. Callers of the engine use the OEM code page. An archive stores a name outside ASCII
// as UTF-8 and flags it, so that it is the same on every system.
//
// Other programs also write names without the flag, in the OEM code page of the machine (which is
// code page 437 for most readers) or in UTF-8, and add the name in UTF-8 as an extra field that
// readers prefer (APPNOTE 4.6.9). If that differs from the record's name only in the direction of
// slashes, the record's name counts.

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

#include "zip/engine/container/central_directory.h"
#include "zip/engine/container/local_header.h"

namespace zip_engine {

enum class NameEncoding {
  Ascii,
  Utf8,     // to be flagged
  Unknown,  // a name of the system that is not text; stored unchanged, with kMadeByUnknownNames
};

struct ArchiveName {
  std::string bytes;
  NameEncoding encoding = NameEncoding::Ascii;
};

ArchiveName archiveName(const std::string& oemName);

// "Version made by" of entries whose name must not be converted: host Unix, whose names readers
// leave alone, and version 1.0, which no other program writes with it.
inline constexpr std::uint16_t kMadeByUnknownNames = 3 << 8 | 10;

// "Version made by" of entries whose names are stored with `/` and returned with `\`: host NTFS or,
// as above, Unix, with versions that no other program writes with them.
inline constexpr std::uint16_t kMadeByWithSlashes = 11 << 8 | 21;
inline constexpr std::uint16_t kMadeByUnknownWithSlashes = 3 << 8 | 11;
inline constexpr std::uint16_t kMadeByUnixWithSlashes = 3 << 8 | 12;
// "Version made by" of other entries with a mode of Unix.
inline constexpr std::uint16_t kMadeByUnix = 3 << 8 | 20;

inline bool isStoredWithSlashes(const CentralRecord& record) {
  const std::uint16_t madeBy = record.versionMadeBy();
  return madeBy == kMadeByWithSlashes || madeBy == kMadeByUnknownWithSlashes ||
         madeBy == kMadeByUnixWithSlashes;
}

// Returns the name of an entry in the OEM code page. Where that is UTF-8, names in another encoding
// are taken for code page 437. `converted` owns the name if it is not part of the record.
std::string_view oemName(const CentralRecord& record, std::string& converted);

// Bytes of the Unicode Path extra field that precede its name: version 1 and the CRC-32 of the name
// in the record.
inline constexpr std::size_t kUnicodePathHeader = 5;

// Appends a Unicode Path extra field with the name, which is UTF-8, with `/` in place of `\`.
// Programs that know the field then make directories. Most of them ignore it if the name is flagged
// as UTF-8.
void appendUnicodePath(Bytes& extra, const std::string& storedName);

inline bool mayHaveUnicodePath(const CentralRecord& record) {
  constexpr std::size_t kBlockHeader = 4;
  return record.extraLength() > kBlockHeader + kUnicodePathHeader;
}

// Finds the records of one name without converting the names of all others.
class NameMatcher {
 public:
  // The name is borrowed.
  explicit NameMatcher(std::string_view oemName);
  bool matches(const CentralRecord& record) {
    // A name outside ASCII is never converted to one in ASCII.
    if (isPlain_ && !mayHaveUnicodePath(record) && !isStoredWithSlashes(record)) {
      return record.nameLength() == name_.size() && endsAlike(record.name()) &&
             record.name() == name_;
    }
    return oemName(record, converted_) == name_;
  }

 private:
  // Compares the last bytes of a name of the same length. Names of one archive often begin alike.
  bool endsAlike(std::string_view name) const {
    constexpr std::size_t kEnd = 8;
    const std::size_t at = name_.size() - kEnd;
    return name_.size() < kEnd || std::memcmp(name.data() + at, name_.data() + at, kEnd) == 0;
  }

  std::string_view name_;
  bool isPlain_;
  std::string converted_;
};

// Reports whether the names of a local header and of a central record are those of one entry: they
// may differ in the direction of slashes and in the encoding of characters outside ASCII. The
// central name is the one that counts.
bool isSameName(std::string_view local, std::string_view central);

// The same for a local header with its extra field. It may also have no name (APPNOTE 4.4.17), or
// another one if both have a Unicode Path extra field with the same name.
bool hasNameOf(const LocalHeader& header, const CentralRecord& record);

}  // namespace zip_engine
