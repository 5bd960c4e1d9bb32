#include "packed_bytes.h"

#include <chrono>
#include <utility>

#include "file_bytes.h"
#include "paths.h"

namespace fs = std::filesystem;

namespace {

bool isHeader(const std::string& bytes) { return Bytes(bytes).u32(0) == kLocalSignature; }

}  // namespace

PackedBytes::PackedBytes(const std::string& zip)
    : directory_(fs::absolute(systemPath(zip)).parent_path()),
      start_(fs::file_time_type::clock::now() - std::chrono::seconds(1)) {}

std::uint64_t PackedBytes::operator()() {
  if (path_.empty()) path_ = findGrowing();
  File file(path_);
  std::string current = file.read(position_, kLocalSize);
  while (isHeader(current)) {
    const Bytes header(current);
    const std::uint64_t next =
        position_ + kLocalSize + header.u16(26) + header.u16(28) + std::uint64_t{header.u32(18)};
    std::string following = file.read(next, kLocalSize);
    if (!isHeader(following)) break;
    bytes_ += header.u32(22);
    position_ = next;
    current = std::move(following);
  }
  return bytes_;
}

fs::path PackedBytes::findGrowing() const {
  std::error_code error;
  for (fs::directory_iterator it(directory_, error), end; !error && it != end;
       it.increment(error)) {
    if (it->path().extension() != ".tmp") continue;
    std::error_code ignored;
    const auto time = it->last_write_time(ignored);
    if (ignored || time < start_ || !it->is_regular_file(ignored)) continue;
    if (isHeader(File(it->path()).read(0, kLocalSize))) return it->path();
  }
  return {};
}
