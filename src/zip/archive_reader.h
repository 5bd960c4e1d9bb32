#pragma once
// Reading an archive through the zip engine.

#include <filesystem/archive.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct ZipReader;

namespace zip {

// The central directory's record of an entry.
struct EntryInfo {
  std::string name;        // as stored, cut at kLongestName bytes
  bool nameIsCut = false;  // the stored name is longer than that
  bool isDirectory = false;
  bool isStored = false;  // without compression
  bool isDeflated = false;
  std::uint64_t size = 0;        // of the content, in bytes
  std::uint64_t storedSize = 0;  // of the stored bytes
  std::uint32_t commentLength = 0;
};

// An archive open for reading, with one of its entries as the current one. Closed with its object.
// A reader whose archive could not be opened has no entries.
class ArchiveReader {
 public:
  explicit ArchiveReader(const char* path);
  // Opens the archive only if it has an entry with exactly this stored name, of at most kLongestName
  // bytes, and makes the last one the current one.
  ArchiveReader(const char* path, const std::string& stored);

  // True if the file could be opened and is an archive.
  explicit operator bool() const { return reader_ != nullptr; }

  // Closes the archive before the object is destroyed.
  void close() { reader_.reset(); }

  // Returns the number of entries, 0 if it cannot be read.
  std::uint32_t entryCount() const;
  // Returns the comment of the whole archive.
  std::string globalComment() const;

  // Makes each entry the current one, in the order of the central directory, and calls
  // `visit()`, until that returns false. True if all entries were visited.
  template <typename Visit>
  bool forEachEntry(Visit visit) {
    for (bool found = first(); found; found = next()) {
      if (!visit()) return false;
    }
    return true;
  }
  // Appends the stored names of all entries. False if there is none.
  bool names(std::vector<std::string>& names);
  // Makes the last entry with exactly this stored name the current one. False if there is none.
  // Names of more than kLongestName bytes are not found by the first function.
  bool locate(const std::string& stored);
  bool locateAny(const std::string& stored);
  // Makes the entry current whose record has this position. False if none has.
  bool moveTo(std::uint64_t position);

  // Returns the central directory's record of the current entry, which there must be.
  EntryInfo describe() const;
  // Reads the current entry's comment, whose length describe() returned.
  void readComment(std::uint32_t length, std::string& comment) const;
  // Returns all that the directory says of the current entry, which there must be.
  FileSystem::Entry record() const;

  // Returns the number of bytes of the archive that belong to no entry.
  std::uint64_t unusedBytes() const;

 private:
  friend class OpenEntry;
  friend class ArchiveWriter;

  struct Closer {
    void operator()(ZipReader* reader) const;
  };

  bool first();
  bool next();

  std::unique_ptr<ZipReader, Closer> reader_;
};

// The content of a reader's current entry. Closed with its object.
class OpenEntry {
 public:
  // Opens the entry. `password` is null for none.
  OpenEntry(ArchiveReader& archive, const char* password);
  OpenEntry(const OpenEntry&) = delete;
  OpenEntry& operator=(const OpenEntry&) = delete;
  ~OpenEntry();

  // False if the entry cannot be read: its method is unknown, the password is wrong or missing, or
  // its sizes or place in the file are impossible.
  explicit operator bool() const { return status_ == 0; }
  // Why that is so, or why a read has failed.
  FileSystem::Reason failure() const;

  // Reads the next bytes, at most INT_MAX. Returns their number, 0 at the end, negative on failure.
  // The last byte is delivered only if length and CRC-32 of the content are right.
  int read(unsigned char* buffer, std::uint32_t size);
  // Reads all `size` bytes of the content, with one engine read where that can count them.
  bool readAll(unsigned char* buffer, std::uint32_t size);

 private:
  ZipReader* reader_;
  int status_;
};

// True if a file that is no archive is a part of one of several files.
bool isPartOfSplitArchive(const char* path);

// True if the stored bytes, which are there, make the size likely that the archive claims. If not,
// memory is taken as bytes arrive.
bool isLikelySize(const EntryInfo& info);

// True if the content is passed on in blocks, because it is large, or reading it into memory as a whole
// is no faster.
bool isReadInBlocks(const EntryInfo& info);

// Size of those blocks, and of the blocks in which files are read, in bytes.
inline constexpr std::uint32_t kReadBlock = 256 << 10;

}  // namespace zip
