#pragma once
// The bytes of an archive.

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

// A local file header (PKWARE APPNOTE 4.3.7) without name and extra field.
inline constexpr std::uint32_t kLocalSignature = 0x04034b50;
inline constexpr std::size_t kLocalSize = 30;

// Bytes that others own, read as little-endian numbers. A number that is not all
// there is 0.
class Bytes {
 public:
  Bytes(const char* data, std::size_t size) : data_(data), size_(size) {}
  explicit Bytes(const std::string& text) : Bytes(text.data(), text.size()) {}

  std::size_t size() const { return size_; }
  // At most `size` bytes from `position` on.
  Bytes at(std::size_t position, std::size_t size = std::string::npos) const {
    position = std::min(position, size_);
    return {data_ + position, std::min(size, size_ - position)};
  }
  std::uint16_t u16(std::size_t position) const {
    return static_cast<std::uint16_t>(number(position, 2));
  }
  std::uint32_t u32(std::size_t position) const {
    return static_cast<std::uint32_t>(number(position, 4));
  }
  std::uint64_t u64(std::size_t position) const { return number(position, 8); }
  std::string text() const { return {data_, size_}; }

 private:
  std::uint64_t number(std::size_t position, std::size_t count) const {
    if (position > size_ || size_ - position < count) return 0;
    std::uint64_t value = 0;
    for (std::size_t i = count; i-- != 0;) {
      value = value << 8 | static_cast<unsigned char>(data_[position + i]);
    }
    return value;
  }

  const char* data_;
  std::size_t size_;
};

// A file of this system.
class File {
 public:
  explicit File(const std::filesystem::path& path);
  // Size when the object was made; 0 if the file cannot be read.
  std::uint64_t size() const { return size_; }
  // `size` bytes at `position`, or none if the file does not have them.
  std::string read(std::uint64_t position, std::uint64_t size);

 private:
  std::ifstream stream_;
  std::uint64_t size_ = 0;
};
