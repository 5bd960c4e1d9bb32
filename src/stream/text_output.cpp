#include <filesystem/file_stream.h>

#include <boost/format.hpp>
#include <locale>

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
  // The host's global locale may group digits.
  out.write(str(boost::format("%d", std::locale::classic()) % value));
  return out;
}

FileSystem::FileStream& operator<<(FileSystem::FileStream& out, const char* text) {
  out.write(std::string(text));
  return out;
}
