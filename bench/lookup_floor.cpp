#include "lookup_floor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "benchmarks.h"

namespace bench {
namespace {

template <typename Value>
Value load(const unsigned char* bytes) {
  Value value;
  std::memcpy(&value, bytes, sizeof(value));
  return value;
}

void readAt(int file, unsigned char* bytes, std::size_t size, std::size_t position) {
  const ssize_t count = ::pread(file, bytes, size, static_cast<off_t>(position));
  require(count == static_cast<ssize_t>(size), "pread");
}

void lock(int file, int command, short type, off_t first, off_t count) {
  constexpr off_t kFirst = off_t{1} << 62;
  struct flock range {};
  range.l_type = type;
  range.l_whence = SEEK_SET;
  range.l_start = kFirst + first;
  range.l_len = count;
  ::fcntl(file, command, &range);
}

}  // namespace

LookupFloor::LookupFloor(const std::string& path)
    : path_(path),
      held_(open(kHeld)),
      inflater_(libdeflate_alloc_decompressor(), libdeflate_free_decompressor) {}

bool LookupFloor::find(const std::string& name, std::vector<unsigned char>* bytes) {
  close(held_);
  const int file = open(kRead);
  const bool isFound = search(file, name);
  if (isFound && bytes != nullptr) readEntry(file, *bytes);
  close(file);
  held_ = open(kHeld);
  return isFound;
}

int LookupFloor::open(Use use) const {
  struct stat status;
  ::stat(path_.c_str(), &status);
  const int file = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC);
  require(file >= 0, "open");
  // Without a device it may be that of a network, where locks work differently.
  struct statfs system;
  if (major(status.st_dev) == 0) require(::fstatfs(file, &system) == 0, "fstatfs");
  if (use == kHeld) lock(file, F_OFD_SETLK, F_RDLCK, 6, 1);
  lock(file, F_OFD_SETLK, F_RDLCK, 0, 2);
  if (use == kHeld) lock(file, F_OFD_SETLK, F_RDLCK, 5, 1);
  lock(file, F_OFD_GETLK, F_WRLCK, 3, 2);
  if (use == kHeld) lock(file, F_OFD_SETLK, F_UNLCK, 6, 1);
  // It may have been deleted before it was locked.
  require(::fstat(file, &status) == 0 && status.st_nlink != 0, "fstat");
  return file;
}

void LookupFloor::close(int file) {
  struct flock all {};
  all.l_type = F_UNLCK;
  ::fcntl(file, F_OFD_SETLK, &all);
  ::close(file);
}

bool LookupFloor::search(int file, const std::string& name) {
  constexpr std::size_t kTail = 4096;
  constexpr std::size_t kEndSize = 22;
  struct stat status;
  require(::fstat(file, &status) == 0, "fstat");
  unsigned char tail[kTail];
  const std::size_t size = static_cast<std::size_t>(status.st_size);
  const std::size_t tailSize = std::min(kTail, size);
  readAt(file, tail, tailSize, size - tailSize);
  const unsigned char* const end = tail + tailSize - kEndSize;
  std::size_t position = load<std::uint32_t>(end + 16);
  const std::size_t directoryEnd = position + load<std::uint32_t>(end + 12);
  bool isFound = false;
  for (std::size_t known = 0; position < directoryEnd;) {
    const std::size_t step = std::min(directoryEnd - position, kWindow - known);
    readAt(file, window_ + known, step, position);
    position += step;
    known += step;
    std::size_t at = 0;
    while (at + kRecordSize <= known) {
      const unsigned char* const record = window_ + at;
      const std::size_t nameLength = load<std::uint16_t>(record + 28);
      const std::size_t length = kRecordSize + nameLength + load<std::uint16_t>(record + 30) +
                                 load<std::uint16_t>(record + 32);
      if (at + length > known) break;
      if (nameLength == name.size() &&
          std::memcmp(record + kRecordSize, name.data(), nameLength) == 0) {
        std::memcpy(record_, record, kRecordSize);
        isFound = true;
      }
      at += length;
    }
    known -= at;
    std::memmove(window_, window_ + at, known);
  }
  return isFound;
}

void LookupFloor::readEntry(int file, std::vector<unsigned char>& bytes) {
  constexpr std::size_t kLocalSize = 30;
  constexpr std::size_t kUsualExtra = 64;
  const std::size_t storedSize = load<std::uint32_t>(record_ + 20);
  stored_.resize(kLocalSize + load<std::uint16_t>(record_ + 28) + kUsualExtra + storedSize);
  readAt(file, stored_.data(), stored_.size(), load<std::uint32_t>(record_ + 42));
  const std::size_t data = kLocalSize + load<std::uint16_t>(stored_.data() + 26) +
                           load<std::uint16_t>(stored_.data() + 28);
  bytes.resize(load<std::uint32_t>(record_ + 24));
  require(
      libdeflate_deflate_decompress(inflater_.get(), stored_.data() + data, storedSize,
                                    bytes.data(), bytes.size(), nullptr) == LIBDEFLATE_SUCCESS &&
          libdeflate_crc32(0, bytes.data(), bytes.size()) == load<std::uint32_t>(record_ + 16),
      "inflating");
}

}  // namespace bench
