#include "platform/linux/listing/directory_reader.h"

#include <cerrno>

namespace platform::native {

const dirent64* DirectoryReader::next(int directory) {
  constexpr std::size_t kBlock = 32 << 10;
  if (position_ == size_) {
    if (block_ == nullptr) block_.reset(new char[kBlock]);
    const ssize_t count = getdents64(directory, block_.get(), kBlock);
    // A directory that was removed has no entries any more.
    if (count == 0 || (count < 0 && errno == ENOENT)) errno = 0;
    if (count <= 0) {
      block_.reset();
      size_ = position_ = 0;
      return nullptr;
    }
    size_ = static_cast<std::size_t>(count);
    position_ = 0;
  }
  const auto* const entry = reinterpret_cast<const dirent64*>(block_.get() + position_);
  position_ += entry->d_reclen;
  return entry;
}

}  // namespace platform::native
