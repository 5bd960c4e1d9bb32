#include <filesystem/file_stream.h>

#include <array>
#include <charconv>
#include <limits>
#include <string>

FileSystem::FileStream& FileSystem::FileStream::operator<<(
    FileStream& (*manipulator)(FileStream&)) {
  return manipulator(*this);
}

FileSystem::FileStream& operator<<(FileSystem::FileStream& out, FileSystem::FileStream& source) {
  out.append(source);
  return out;
}

FileSystem::FileStream& operator<<(FileSystem::FileStream& out, const std::string& text) {
  out.write(text);
  return out;
}

FileSystem::FileStream& operator<<(FileSystem::FileStream& out, long value) {
  // boost::format("%d") would take 14 times as many instructions.
  std::array<char, std::numeric_limits<long>::digits10 + 2> digits;
  const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
  out.write(std::string(digits.data(), result.ptr));
  return out;
}

FileSystem::FileStream& operator<<(FileSystem::FileStream& out, const char* text) {
  out.write(std::string(text));
  return out;
}
