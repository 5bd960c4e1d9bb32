#pragma once
// How far the packing of an archive has come.

#include <cstdint>
#include <filesystem>
#include <string>

// Counts the bytes of the files that are in a growing archive, by the local headers
// of its entries: | header | name | extra field | data | header | ... The header of
// the entry that is being written has no sizes yet, and no header follows it.
//
// The archive grows under a temporary name beside its own. It is the only file there
// with that ending that has changed since the object was made and begins with a local
// header. Where it cannot be found or read, nothing is counted.
class PackedBytes {
 public:
  explicit PackedBytes(const std::string& zip);

  // Bytes of all files that are complete in the archive.
  std::uint64_t operator()();

 private:
  std::filesystem::path findGrowing() const;

  std::filesystem::path directory_;
  std::filesystem::file_time_type start_;
  std::filesystem::path path_;  // of the growing archive; empty until it is found
  std::uint64_t position_ = 0;  // of the first entry that is not counted
  std::uint64_t bytes_ = 0;
};
