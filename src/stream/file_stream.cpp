#include <filesystem/file_stream.h>

#include <memory>
#include <utility>

#include "platform/win32.h"

namespace FileSystem {
namespace {

constexpr unsigned int kDefaultLimit = 0x200000;

// Returns the number of bytes read; 0 at the end of the file and on failure.
DWORD readBytes(HANDLE file, char* bytes, std::size_t size) {
  DWORD count = 0;
  return ReadFile(file, bytes, static_cast<DWORD>(size), &count, nullptr) ? count : 0;
}

// A short write counts as success.
bool writeBytes(HANDLE file, const char* bytes, std::size_t size) {
  DWORD written = 0;
  return WriteFile(file, bytes, static_cast<DWORD>(size), &written, nullptr) != FALSE;
}

bool writeAndCommit(HANDLE file, const std::string& data) {
  const bool done = writeBytes(file, data.data(), data.size());
  FlushFileBuffers(file);
  return done;
}

// Writes the pending bytes. Bytes that fail to reach the file are dropped:
// written later, they would be in the wrong place.
void writePending(HANDLE file, std::string& pending) {
  if (pending.empty()) return;
  writeAndCommit(file, pending);
  pending.clear();
}

bool seekTo(HANDLE file, DWORD method) {
  return SetFilePointerEx(file, LARGE_INTEGER{}, nullptr, method) != FALSE;
}

// A buffer for one block of a copying loop, not zero-filled. An unbuffered stream has no block size
// of its own and uses the default.
class Block {
 public:
  explicit Block(unsigned int limit)
      : size_(limit != 0 ? limit : kDefaultLimit), bytes_(new char[size_]) {}

  // Returns the number of bytes read; 0 at the end of the file and on failure.
  DWORD readFrom(HANDLE file) { return readBytes(file, bytes_.get(), size_); }
  const char* data() const { return bytes_.get(); }

 private:
  DWORD size_;
  std::unique_ptr<char[]> bytes_;
};

}  // namespace

FileStream::FileStream() : m_bufferSize(kDefaultLimit), m_handle(INVALID_HANDLE_VALUE) {}

FileStream::FileStream(const char* path, int flags) : FileStream() { open(path, flags); }

FileStream::FileStream(const FileStream& other) = default;

FileStream& FileStream::operator=(const FileStream& other) = default;

FileStream::~FileStream() { close(); }

bool FileStream::open(const char* path, int flags) {
  DWORD access = (flags & OpenRead) != 0 ? GENERIC_READ : 0;
  DWORD disposition = OPEN_EXISTING;
  if ((flags & OpenWrite) != 0) {
    access |= GENERIC_WRITE;
    disposition = (flags & OpenTruncate) != 0 ? CREATE_ALWAYS : OPEN_ALWAYS;
  }
  m_handle = CreateFileA(path, access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
  if (!is_open()) return false;
  if ((flags & OpenAppend) != 0) seekEOF();
  return true;
}

bool FileStream::close() {
  if (!is_open()) return false;
  writePending(m_handle, m_buffer);
  CloseHandle(std::exchange(m_handle, INVALID_HANDLE_VALUE));
  return true;
}

bool FileStream::is_open() const { return m_handle != INVALID_HANDLE_VALUE; }

bool FileStream::write(const std::string& data) {
  if (m_buffer.size() + data.size() >= m_bufferSize) {
    writePending(m_handle, m_buffer);
    if (data.size() >= m_bufferSize) return doWrite(data);
    // A full buffer, so that a small write costs no more than a copy.
    m_buffer.reserve(m_bufferSize);
  }
  m_buffer += data;
  return true;
}

bool FileStream::put(const std::string& data) { return write(data); }

bool FileStream::put(char c) { return write(std::string(1, c)); }

void FileStream::flush() {
  writePending(m_handle, m_buffer);
  FlushFileBuffers(m_handle);
}

void FileStream::bufferSize(unsigned int n) {
  m_bufferSize = n;
  if (n < m_buffer.size()) writePending(m_handle, m_buffer);
}

unsigned int FileStream::bufferSize() const { return m_bufferSize; }

bool FileStream::seekBOF() {
  writePending(m_handle, m_buffer);
  return seekTo(m_handle, FILE_BEGIN);
}

bool FileStream::seekEOF() {
  writePending(m_handle, m_buffer);
  return seekTo(m_handle, FILE_END);
}

std::uint64_t FileStream::size() const {
  LARGE_INTEGER size{};
  if (!GetFileSizeEx(m_handle, &size)) return 0;
  return static_cast<std::uint64_t>(size.QuadPart) + m_buffer.size();
}

void FileStream::swap(FileStream& other) { std::swap(m_handle, other.m_handle); }

void FileStream::truncate() {
  seekBOF();
  SetEndOfFile(m_handle);
}

bool FileStream::read(std::vector<char>& data) {
  if (!data.empty()) {
    const DWORD count = readBytes(m_handle, data.data(), data.size());
    if (count == 0) return false;
    data.resize(count);
    return true;
  }
  Block block(m_bufferSize);
  while (const DWORD count = block.readFrom(m_handle)) {
    data.insert(data.end(), block.data(), block.data() + count);
  }
  return true;
}

bool FileStream::append(FileStream& source) {
  source.flush();
  if (!source.seekBOF()) return false;
  writePending(m_handle, m_buffer);

  Block block(m_bufferSize);
  while (const DWORD count = block.readFrom(source.m_handle)) {
    writeBytes(m_handle, block.data(), count);
  }
  return true;
}

bool FileStream::doWrite(const std::string& data) { return writeAndCommit(m_handle, data); }

}  // namespace FileSystem
