#include "zip/engine/reading/read_ahead.h"

#include <algorithm>
#include <cstring>

namespace zip_engine {
namespace {

constexpr std::size_t kWindow = 256 << 10;
// Larger pieces are as fast without the window.
constexpr std::size_t kLargestPiece = 16 << 10;
constexpr std::uint64_t kLargestGap = 16 << 10;

}  // namespace

bool ReadAhead::readAt(const ArchiveFile& file, std::uint64_t position, unsigned char* buffer,
                       std::size_t size) {
  const bool isFirst = lastEnd_ == 0;
  const bool follows = !isFirst && position >= lastStart_ && position <= lastEnd_ + kLargestGap;
  lastStart_ = position;
  lastEnd_ = position + size;
  if (!holds(position, size) && follows && size <= kLargestPiece) fill(file, position);
  if (!holds(position, size)) return file.readAt(position, buffer, size);
  std::memcpy(buffer, window_.data() + (position - windowStart_), size);
  return true;
}

bool ReadAhead::holds(std::uint64_t position, std::size_t size) const {
  // It wraps around if the piece begins before the window.
  const std::uint64_t offset = position - windowStart_;
  return offset <= window_.size() && size <= window_.size() - offset;
}

void ReadAhead::fill(const ArchiveFile& file, std::uint64_t position) {
  const std::uint64_t fileSize = file.size().value_or(0);
  const std::uint64_t rest = fileSize - std::min(position, fileSize);
  window_.resize(static_cast<std::size_t>(std::min<std::uint64_t>(kWindow, rest)));
  windowStart_ = position;
  if (!file.readAt(position, window_.data(), window_.size())) window_.clear();
}

}  // namespace zip_engine
