#pragma once
// The least that a call on an archive takes which keeps nothing between calls.

#include <libdeflate.h>

#include <memory>
#include <string>
#include <vector>

namespace bench {

// Makes the system calls of a lookup by a ZipArchive that reads: it gives the file back that it holds,
// opens it with the locks of its share mode, reads the end and the directory, and holds the file again.
// The directory is searched once, in pieces that stay in the cache, and only the CRC-32 is checked. The
// archive has entries below 4 GiB and no comment.
class LookupFloor {
 public:
  explicit LookupFloor(const std::string& path);
  LookupFloor(const LookupFloor&) = delete;
  LookupFloor& operator=(const LookupFloor&) = delete;
  ~LookupFloor() { close(held_); }

  // Reports whether the archive has the entry.
  bool find(const std::string& name) { return find(name, nullptr); }
  // Reads an entry, which is deflated. Returns false if there is none.
  bool read(const std::string& name, std::vector<unsigned char>& bytes) {
    return find(name, &bytes);
  }

 private:
  enum Use { kRead, kHeld };
  static constexpr std::size_t kWindow = 32 << 10;
  static constexpr std::size_t kRecordSize = 46;

  bool find(const std::string& name, std::vector<unsigned char>* bytes);
  int open(Use use) const;
  static void close(int file);
  // Finds the record of an entry.
  bool search(int file, const std::string& name);
  // Reads the entry of that record.
  void readEntry(int file, std::vector<unsigned char>& bytes);

  std::string path_;
  int held_;
  unsigned char window_[kWindow];
  unsigned char record_[kRecordSize];
  std::vector<unsigned char> stored_;
  std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor*)> inflater_;
};

}  // namespace bench
