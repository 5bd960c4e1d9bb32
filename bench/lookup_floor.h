#pragma once
// The least that a call on an archive takes which keeps nothing between calls.

#include <string>
#include <vector>

namespace bench {

// Makes the system calls of a lookup by a ZipArchive that reads: it gives the file back that it holds,
// opens it with the locks of its share mode, reads the end and the directory, and holds the file again.
// The directory is searched once, and nothing is checked.
class LookupFloor {
 public:
  explicit LookupFloor(const std::string& path) : path_(path), held_(open(kHeld)) {}
  LookupFloor(const LookupFloor&) = delete;
  LookupFloor& operator=(const LookupFloor&) = delete;
  ~LookupFloor() { close(held_); }

  // Reports whether an archive without zip64 records and without a comment has the entry, and reads
  // its stored bytes if `stored` is not null.
  bool find(const std::string& name, std::vector<unsigned char>* stored = nullptr);

 private:
  enum Use { kRead, kHeld };

  int open(Use use) const;
  static void close(int file);
  // Returns the offset of the record in the directory, or its size.
  std::size_t search(int file, const std::string& name);
  void read(int file, const unsigned char* record, std::vector<unsigned char>& stored) const;

  std::string path_;
  int held_;
  std::vector<unsigned char> directory_;
};

}  // namespace bench
