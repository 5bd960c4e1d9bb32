#pragma once
// A text of limited size, which is cut without notice as by lstrcpynA.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace FileSystem::Detail {

// Size of a path buffer in bytes, including the terminator.
inline constexpr std::size_t kPathBuffer = 260;

// Holds a text and a terminator.
template <std::size_t Size>
class FixedText {
 public:
  // The most bytes of the text.
  static constexpr std::size_t kLongest = Size - 1;

  FixedText() = default;
  // Null counts as empty. Reads no more bytes than are kept.
  explicit FixedText(const char* text) {
    if (text != nullptr) append({text, strnlen(text, kLongest)});
  }
  explicit FixedText(std::string_view text) { append(text); }

  void append(std::string_view text) {
    const std::size_t count = std::min(text.size(), kLongest - size_);
    text.copy(text_ + size_, count);
    truncate(size_ + count);
  }
  // Keeps the first `size` bytes. The text must not be shorter.
  void truncate(std::size_t size) {
    size_ = size;
    text_[size] = '\0';
  }

  const char* c_str() const { return text_; }
  std::string_view view() const { return {text_, size_}; }

 private:
  std::size_t size_ = 0;
  char text_[Size] = {};
};

using PathText = FixedText<kPathBuffer>;

}  // namespace FileSystem::Detail
