#include "file_bytes.h"

File::File(const std::filesystem::path& path) : stream_(path, std::ios::binary) {
  std::error_code error;
  size_ = std::filesystem::file_size(path, error);
  if (error) size_ = 0;
}

std::string File::read(std::uint64_t position, std::uint64_t size) {
  if (position > size_ || size > size_ - position) return {};
  std::string bytes(static_cast<std::size_t>(size), '\0');
  stream_.clear();
  stream_.seekg(static_cast<std::streamoff>(position));
  stream_.read(bytes.data(), static_cast<std::streamsize>(size));
  return stream_ ? bytes : std::string();
}
