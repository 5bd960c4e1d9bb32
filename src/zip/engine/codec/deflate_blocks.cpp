#include "zip/engine/codec/deflate_blocks.h"

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

#include "zip/engine/codec/prefix_codes.h"

namespace zip_engine {
namespace {

constexpr unsigned kStored = 0;
constexpr unsigned kFixed = 1;
constexpr unsigned kDynamic = 2;

// The bits of a stream, lowest first, with zeros after its end.
class BitReader {
 public:
  BitReader(const unsigned char* bytes, std::size_t size) : bytes_(bytes), size_(size) {}

  // Makes at least 56 bits ready. Returns false if the position is past the end.
  bool refill() {
    if (next_ + sizeof(bits_) <= size_) {
      add(load64(bytes_ + next_));
      return true;
    }
    std::array<unsigned char, sizeof(bits_)> last{};
    std::copy(bytes_ + std::min(next_, size_), bytes_ + size_, last.begin());
    add(load64(last.data()));
    return !isPastEnd();
  }
  std::uint64_t peek() const { return bits_; }
  void skip(unsigned count) {
    bits_ >>= count;
    ready_ -= count;
  }
  unsigned take(unsigned count) {
    refill();
    const unsigned value = static_cast<unsigned>(bits_ & ((1U << count) - 1));
    skip(count);
    return value;
  }
  // Continues at a position in bytes.
  void moveTo(std::size_t byte) {
    next_ = byte;
    bits_ = 0;
    ready_ = 0;
  }
  // In bits from the start.
  std::size_t position() const { return next_ * 8 - ready_; }
  bool isPastEnd() const { return position() > size_ * 8; }

 private:
  // Adds as many of the next eight bytes as there is room for.
  void add(std::uint64_t bytes) {
    bits_ |= bytes << ready_;
    next_ += (63 - ready_) >> 3;
    ready_ |= 56;
  }

  const unsigned char* bytes_;
  std::size_t size_;
  std::size_t next_ = 0;
  std::uint64_t bits_ = 0;
  unsigned ready_ = 0;
};

enum Kind : unsigned char { kLiteral, kMatch, kEnd, kNoCode = 0xFF };

// The value of a code, and its length in bits with its extra bits.
struct Step {
  unsigned char value = kNoCode;
  unsigned char bits = 0;
};

// The steps over the codes of one alphabet, indexed by the next bits of the stream.
class StepTable {
 public:
  // `stepOf(symbol)` returns the value of a symbol and the number of its extra bits. Returns false
  // if no code has these lengths.
  template <typename StepOf>
  bool build(const unsigned char* lengths, std::size_t count, StepOf stepOf) {
    const auto whole = [&](std::size_t symbol, unsigned length) {
      Step step = stepOf(symbol);
      step.bits = static_cast<unsigned char>(step.bits + length);
      return step;
    };
    if (!fillCodeTable(lengths, count, steps_, whole)) return false;
    mask_ = steps_.size() - 1;
    return true;
  }
  Step at(std::uint64_t bits) const { return steps_[bits & mask_]; }

 private:
  std::size_t mask_ = 0;
  std::vector<Step> steps_;
};

Step lengthStep(std::size_t symbol) {
  if (symbol < kEndOfBlock) return {kLiteral, 0};
  if (symbol == kEndOfBlock) return {kEnd, 0};
  const std::size_t index = symbol - kEndOfBlock - 1;
  // The fixed codes have two symbols that no stream uses.
  if (index > 28) return {};
  const std::size_t extra = index == 28 ? 0 : std::max<std::size_t>(index / 4, 1) - 1;
  return {kMatch, static_cast<unsigned char>(extra)};
}

Step distanceStep(std::size_t symbol) {
  if (symbol > 29) return {};
  return {kMatch, static_cast<unsigned char>(std::max<std::size_t>(symbol / 2, 1) - 1)};
}

Step symbolStep(std::size_t symbol) { return {static_cast<unsigned char>(symbol), 0}; }

// Steps over the blocks of a stream.
class BlockWalk {
 public:
  BlockWalk(const unsigned char* stream, std::size_t size) : reader_(stream, size) {}

  // Returns false if the stream is invalid, or ends before its last block does.
  bool run() {
    for (bool isLast = false; !isLast;) {
      lastBlock_ = reader_.position();
      isLast = reader_.take(1) != 0;
      if (!stepOver(reader_.take(2)) || reader_.isPastEnd()) return false;
    }
    return true;
  }
  // Positions in bits of the start of the last block and of its end.
  std::size_t lastBlock() const { return lastBlock_; }
  std::size_t end() const { return reader_.position(); }

 private:
  bool stepOver(unsigned type) {
    switch (type) {
      case kStored:
        stepOverStored();
        return true;
      case kFixed:
        return readFixedCodes() && stepOverCodes();
      case kDynamic:
        return readCodes() && stepOverCodes();
      default:
        return false;
    }
  }

  // The size of the block and its complement precede the bytes.
  void stepOverStored() {
    const std::size_t sizes = (reader_.position() + 7) / 8;
    reader_.moveTo(sizes);
    reader_.moveTo(sizes + 4 + reader_.take(16));
  }

  bool readFixedCodes() {
    std::array<unsigned char, kLengthSymbols> lengths;
    for (std::size_t i = 0; i < lengths.size(); ++i) {
      lengths[i] = i < 144 ? 8 : i < 256 ? 9 : i < 280 ? 7 : 8;
    }
    std::array<unsigned char, kDistanceSymbols> distances;
    distances.fill(5);
    return lengths_.build(lengths.data(), lengths.size(), lengthStep) &&
           distances_.build(distances.data(), distances.size(), distanceStep);
  }

  bool readCodes() {
    constexpr unsigned char kOrder[] = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                        11, 4,  12, 3, 13, 2, 14, 1, 15};
    const std::size_t lengthCount = reader_.take(5) + 257;
    const std::size_t distanceCount = reader_.take(5) + 1;
    const std::size_t orderCount = reader_.take(4) + 4;
    std::array<unsigned char, std::size(kOrder)> codeLengths{};
    for (std::size_t i = 0; i < orderCount; ++i) {
      codeLengths[kOrder[i]] = static_cast<unsigned char>(reader_.take(3));
    }
    // Has room for all values of the counts.
    std::array<unsigned char, kLengthSymbols + kDistanceSymbols> lengths{};
    return lengths_.build(codeLengths.data(), codeLengths.size(), symbolStep) &&
           readLengths(lengths.data(), lengthCount + distanceCount) &&
           lengths_.build(lengths.data(), lengthCount, lengthStep) &&
           distances_.build(lengths.data() + lengthCount, distanceCount, distanceStep);
  }

  // Reads code lengths, which are compressed with a code of their own.
  bool readLengths(unsigned char* lengths, std::size_t count) {
    for (std::size_t i = 0; i < count;) {
      reader_.refill();
      const Step step = lengths_.at(reader_.peek());
      if (step.value == kNoCode) return false;
      reader_.skip(step.bits);
      if (step.value < 16) {
        lengths[i++] = step.value;
        continue;
      }
      if (step.value == 16 && i == 0) return false;
      const unsigned char value = step.value == 16 ? lengths[i - 1] : 0;
      const std::size_t repeats = step.value == 16   ? 3 + reader_.take(2)
                                  : step.value == 17 ? 3 + reader_.take(3)
                                                     : 11 + reader_.take(7);
      if (repeats > count - i) return false;
      std::fill_n(lengths + i, repeats, value);
      i += repeats;
    }
    return true;
  }

  bool stepOverCodes() {
    while (reader_.refill()) {
      const Step step = lengths_.at(reader_.peek());
      reader_.skip(step.bits);
      if (step.value == kLiteral) continue;
      if (step.value != kMatch) return step.value == kEnd;
      const Step distance = distances_.at(reader_.peek());
      if (distance.value != kMatch) return false;
      reader_.skip(distance.bits);
    }
    return false;
  }

  BitReader reader_;
  std::size_t lastBlock_ = 0;
  StepTable lengths_;
  StepTable distances_;
};

}  // namespace

bool continueStream(Bytes& out, std::size_t start) {
  BlockWalk walk(out.data() + start, out.size() - start);
  if (!walk.run()) return false;
  const std::size_t mark = walk.lastBlock();
  out[start + mark / 8] &= static_cast<unsigned char>(~(1U << mark % 8));
  // The header of the stored block is three zero bits, which may be in the next byte, and zeros up
  // to the end of a byte.
  const std::size_t end = walk.end();
  out.resize(start + (end + 3 + 7) / 8);
  out[start + end / 8] &= static_cast<unsigned char>((1U << end % 8) - 1);
  append16(out, 0);
  append16(out, 0xFFFF);
  return true;
}

void appendStoredBlocks(Bytes& out, const unsigned char* plain, std::size_t size) {
  constexpr std::size_t kLargest = std::numeric_limits<std::uint16_t>::max();
  while (size > 0) {
    const std::uint16_t count = static_cast<std::uint16_t>(std::min(size, kLargest));
    out.push_back(0);
    append16(out, count);
    append16(out, static_cast<std::uint16_t>(~count));
    out.insert(out.end(), plain, plain + count);
    plain += count;
    size -= count;
  }
}

void appendLastBlock(Bytes& out) {
  // A block with fixed codes and nothing but its end.
  out.push_back(0x03);
  out.push_back(0x00);
}

}  // namespace zip_engine
