#include "zip/engine/container/archive_file.h"

#include <algorithm>

namespace zip_engine {
namespace {

constexpr std::size_t kLargestTransfer = 0x40000000;

OVERLAPPED overlappedAt(std::uint64_t position) {
  OVERLAPPED overlapped{};
  overlapped.Offset = static_cast<DWORD>(position);
  overlapped.OffsetHigh = static_cast<DWORD>(position >> 32);
  return overlapped;
}

// Splits a transfer into pieces whose sizes fit a DWORD.
template <typename Byte, typename Piece>
bool inPieces(std::uint64_t position, Byte* bytes, std::size_t size, Piece piece) {
  while (size > 0) {
    const DWORD wanted = static_cast<DWORD>(std::min(size, kLargestTransfer));
    OVERLAPPED overlapped = overlappedAt(position);
    DWORD done = 0;
    if (!piece(bytes, wanted, &done, &overlapped) || done != wanted) return false;
    bytes += wanted;
    size -= wanted;
    position += wanted;
  }
  return true;
}

}  // namespace

bool ArchiveFile::open(const char* path, DWORD access, DWORD share, DWORD disposition) {
  handle_.reset(
      CreateFileA(path, access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
  return static_cast<bool>(handle_);
}

std::optional<std::uint64_t> ArchiveFile::size() const {
  LARGE_INTEGER size{};
  if (!GetFileSizeEx(handle_.get(), &size)) return std::nullopt;
  return static_cast<std::uint64_t>(size.QuadPart);
}

bool ArchiveFile::readAt(std::uint64_t position, void* buffer, std::size_t size) const {
  return inPieces(position, static_cast<char*>(buffer), size,
                  [this](char* bytes, DWORD wanted, DWORD* done, OVERLAPPED* overlapped) {
                    return ReadFile(handle_.get(), bytes, wanted, done, overlapped) != FALSE;
                  });
}

bool ArchiveFile::writeAt(std::uint64_t position, const void* data, std::size_t size) {
  return inPieces(position, static_cast<const char*>(data), size,
                  [this](const char* bytes, DWORD wanted, DWORD* done, OVERLAPPED* overlapped) {
                    return WriteFile(handle_.get(), bytes, wanted, done, overlapped) != FALSE;
                  });
}

bool ArchiveFile::truncate(std::uint64_t size) {
  LARGE_INTEGER position{};
  position.QuadPart = static_cast<LONGLONG>(size);
  return SetFilePointerEx(handle_.get(), position, nullptr, FILE_BEGIN) &&
         SetEndOfFile(handle_.get());
}

bool ArchiveFile::sync() { return FlushFileBuffers(handle_.get()) != FALSE; }

bool ArchiveFile::close() { return CloseHandle(handle_.release()) != FALSE; }

}  // namespace zip_engine
