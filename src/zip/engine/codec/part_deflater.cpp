#include "zip/engine/codec/part_deflater.h"

#include <utility>

#include "zip/engine.h"
#include "zip/engine/codec/deflate_blocks.h"

namespace zip_engine {
namespace {

// The default level of large content. Of large text libdeflate's level 6 leaves about 1 % more bytes
// than zlib's default level, and this one about as many, for half as much time again. The parts,
// which cannot refer to the bytes of those before, cost less than 0.1 %.
constexpr int kPartLevel = 7;

bool appendPart(SamplingDeflater& deflater, Bytes& out, const Bytes& plain, int level,
                bool isLast) {
  const std::size_t start = out.size();
  const bool smaller = deflater.appendSmaller(out, plain.data(), plain.size(),
                                              level == ZipLevelDefault ? kPartLevel : level);
  if (!smaller) appendStoredBlocks(out, plain.data(), plain.size());
  if (smaller && !isLast && !continueStream(out, start)) return false;
  if (!smaller && isLast) appendLastBlock(out);
  return true;
}

}  // namespace

void PartDeflater::setWorkers(std::size_t count, Run run) {
  deflaters_ = std::vector<SamplingDeflater>(count);
  run_ = std::move(run);
}

bool PartDeflater::append(Bytes& out, const Bytes& plain, int level, bool isLast) {
  return appendPart(own(), out, plain, level, isLast);
}

bool PartDeflater::deflate(std::vector<Part>& parts, std::size_t count, int level, bool isLast) {
  const auto deflatePart = [&](std::size_t index) {
    Part& part = parts[index];
    part.deflated.clear();
    part.isDeflated = appendPart(deflaters_[index], part.deflated, part.plain, level,
                                 isLast && index + 1 == count);
  };
  for (Part& part : parts) part.isDeflated = false;
  if (count > 1 && !run_(count, deflatePart)) return false;
  // What was not run, or has failed for lack of memory, and the only part.
  for (std::size_t i = 0; i < count; ++i) {
    if (!parts[i].isDeflated) deflatePart(i);
    if (!parts[i].isDeflated) return false;
  }
  return true;
}

}  // namespace zip_engine
