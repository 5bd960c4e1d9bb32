#include "lookup_floor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "benchmarks.h"

namespace bench {
namespace {

constexpr std::size_t kRecordSize = 46;

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

bool LookupFloor::find(const std::string& name, std::vector<unsigned char>* stored) {
  close(held_);
  const int file = open(kRead);
  const std::size_t at = search(file, name);
  const bool isFound = at < directory_.size();
  if (isFound && stored != nullptr) read(file, directory_.data() + at, *stored);
  close(file);
  held_ = open(kHeld);
  return isFound;
}

int LookupFloor::open(Use use) const {
  struct stat status;
  ::stat(path_.c_str(), &status);
  const int file = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC);
  require(file >= 0, "open");
  if (use == kHeld) lock(file, F_OFD_SETLK, F_RDLCK, 6, 1);
  lock(file, F_OFD_SETLK, F_RDLCK, 0, 2);
  if (use == kHeld) lock(file, F_OFD_SETLK, F_RDLCK, 5, 1);
  lock(file, F_OFD_GETLK, F_WRLCK, 3, 2);
  if (use == kHeld) lock(file, F_OFD_SETLK, F_UNLCK, 6, 1);
  return file;
}

void LookupFloor::close(int file) {
  struct flock all {};
  all.l_type = F_UNLCK;
  ::fcntl(file, F_OFD_SETLK, &all);
  ::close(file);
}

std::size_t LookupFloor::search(int file, const std::string& name) {
  constexpr std::size_t kTail = 4096;
  constexpr std::size_t kEndSize = 22;
  constexpr std::size_t kStep = 1 << 20;
  struct stat status;
  require(::fstat(file, &status) == 0, "fstat");
  unsigned char tail[kTail];
  const std::size_t size = static_cast<std::size_t>(status.st_size);
  const std::size_t tailSize = std::min(kTail, size);
  readAt(file, tail, tailSize, size - tailSize);
  const unsigned char* const end = tail + tailSize - kEndSize;
  directory_.resize(load<std::uint32_t>(end + 12));
  const std::size_t position = load<std::uint32_t>(end + 16);
  std::size_t found = directory_.size();
  for (std::size_t known = 0, at = 0; known < directory_.size();) {
    const std::size_t step = std::min(directory_.size() - known, kStep);
    readAt(file, directory_.data() + known, step, position + known);
    known += step;
    while (at + kRecordSize <= known) {
      const unsigned char* const record = directory_.data() + at;
      const std::size_t nameLength = load<std::uint16_t>(record + 28);
      const std::size_t length = kRecordSize + nameLength + load<std::uint16_t>(record + 30) +
                                 load<std::uint16_t>(record + 32);
      if (at + length > known) break;
      if (nameLength == name.size() &&
          std::memcmp(record + kRecordSize, name.data(), nameLength) == 0) {
        found = at;
      }
      at += length;
    }
  }
  return found;
}

void LookupFloor::read(int file, const unsigned char* record,
                       std::vector<unsigned char>& stored) const {
  constexpr std::size_t kLocalSize = 30;
  constexpr std::size_t kUsualExtra = 64;
  const std::size_t nameLength = load<std::uint16_t>(record + 28);
  stored.resize(kLocalSize + nameLength + kUsualExtra + load<std::uint32_t>(record + 20));
  readAt(file, stored.data(), stored.size(), load<std::uint32_t>(record + 42));
}

}  // namespace bench
