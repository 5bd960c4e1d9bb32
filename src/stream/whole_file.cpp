// A whole file as one text of bytes.

#include <filesystem/file_stream.h>
#include <filesystem/stream.h>

#include <algorithm>

#include "platform/unique_handle.h"
#include "platform/win32.h"

namespace FileSystem {
namespace {

// Most bytes asked for in one read.
constexpr std::size_t kLargestBlock = 0x200000;

// Bytes to ask for first: the whole of a small file and one more, so that the
// end shows without another growth of the text.
std::size_t firstBlock(HANDLE file) {
  LARGE_INTEGER size{};
  if (!GetFileSizeEx(file, &size) || size.QuadPart < 0) return kLargestBlock;
  return static_cast<std::size_t>(
      std::min<ULONGLONG>(static_cast<ULONGLONG>(size.QuadPart) + 1, kLargestBlock));
}

}  // namespace

std::string readContent(const std::string& path) {
  std::string content;
  const platform::FileHandle file(CreateFileA(path.c_str(), GENERIC_READ,
                                              FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) return content;

  std::size_t size = 0;
  std::size_t block = firstBlock(file.get());
  DWORD count = 0;
  do {
    content.resize(std::max(content.size(), size + block));
    const std::size_t room = std::min(content.size() - size, kLargestBlock);
    count = 0;
    if (!ReadFile(file.get(), content.data() + size, static_cast<DWORD>(room), &count, nullptr)) {
      break;
    }
    size += count;
    block = size < content.size() ? 1 : kLargestBlock;
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
