// A whole file as one text of bytes.

#include <filesystem/file_stream.h>
#include <filesystem/stream.h>

#include <algorithm>

#include "platform/large_memory.h"
#include "platform/unique_handle.h"
#include "platform/win32.h"

namespace FileSystem {
namespace {

// Most bytes asked for in one read.
constexpr std::size_t kLargestBlock = 0x40000;

// Most bytes that room is made for because a file tells its size: some tell more
// than they hold, or than there is memory for.
constexpr LONGLONG kLargestTold = LONGLONG{4} << 30;

// Size in bytes that the file tells, as far as it is believed; 0 if it tells none.
std::size_t toldSize(HANDLE file) {
  LARGE_INTEGER size{};
  if (!GetFileSizeEx(file, &size)) return 0;
  return static_cast<std::size_t>(std::min(size.QuadPart, kLargestTold));
}

}  // namespace

std::string readContent(const std::string& path) {
  std::string content;
  const platform::FileHandle file(CreateFileA(path.c_str(), GENERIC_READ,
                                              FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) return content;

  // One byte more, so that the end shows without another growth of the text. A
  // block is made room for just before it is read, while it is in the cache.
  const std::size_t told = toldSize(file.get()) + 1;
  platform::reserveForFilling(content, told);
  std::size_t size = 0;
  DWORD count = 0;
  do {
    const std::size_t block = size < told ? std::min(told - size, kLargestBlock) : kLargestBlock;
    content.resize(size + block);
    if (!ReadFile(file.get(), content.data() + size, static_cast<DWORD>(block), &count, nullptr)) {
      break;
    }
    size += count;
  } while (count != 0);
  content.resize(size);
  return content;
}

bool writeContent(const std::string& path, const std::string& content) {
  FileStream stream;
  return stream.open(path.c_str(), FileStream::OpenWrite | FileStream::OpenTruncate) &&
         stream.write(content);
}

}  // namespace FileSystem
