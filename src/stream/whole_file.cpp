#include <filesystem/file_stream.h>
#include <filesystem/stream.h>

#include <algorithm>
#include <new>
#include <stdexcept>

#include "platform/large_memory.h"
#include "platform/unique_handle.h"
#include "platform/win32.h"

namespace FileSystem {
namespace {

// The most bytes of one read.
constexpr std::size_t kLargestBlock = 0x40000;

// Returns the size that the file reports, 0 if it reports none.
std::size_t reportedSize(HANDLE file) {
  LARGE_INTEGER size{};
  GetFileSizeEx(file, &size);
  return static_cast<std::size_t>(size.QuadPart);
}

// Allocates the memory for the content, so that it is never copied to a larger one. The system provides
// it as bytes arrive. Some files report more than they hold, or more than there is memory for: the
// content then grows.
void reserve(std::string& content, std::size_t size) {
  try {
    platform::reserveForFilling(content, size);
  } catch (const std::bad_alloc&) {
  } catch (const std::length_error&) {
  }
}

}  // namespace

std::string readContent(const std::string& path) {
  const platform::FileHandle file(CreateFileA(path.c_str(), GENERIC_READ,
                                              FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) return {};

  // One byte more than reported, so that the read that finds the end needs no larger text. A block
  // is zero-filled just before it is read, so that it is in the cache.
  const std::size_t expected = reportedSize(file.get()) + 1;
  std::string content;
  reserve(content, expected);
  std::size_t size = 0;
  for (;;) {
    const std::size_t block =
        size < expected ? std::min(expected - size, kLargestBlock) : kLargestBlock;
    content.resize(size + block);
    DWORD count = 0;
    if (!ReadFile(file.get(), content.data() + size, static_cast<DWORD>(block), &count, nullptr) ||
        count == 0) {
      break;
    }
    size += count;
  }
  content.resize(size);
  return content;
}

bool writeContent(const std::string& path, const std::string& content) {
  FileStream stream;
  return stream.open(path.c_str(), FileStream::OpenWrite | FileStream::OpenTruncate) &&
         stream.write(content);
}

}  // namespace FileSystem
