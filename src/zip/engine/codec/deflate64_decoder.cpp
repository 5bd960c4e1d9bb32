#include "zip/engine/codec/deflate64_decoder.h"

#include <algorithm>
#include <array>
#include <vector>

#include "zip/engine/codec/prefix_codes.h"

namespace zip_engine {
namespace {

constexpr std::size_t kWindow = 64 << 10;
constexpr unsigned kLastLength = 285;

struct Code {
  std::uint16_t symbol = 0;
  unsigned char bits = 0;  // 0 if no code begins with these bits
};

// The codes of one alphabet, indexed by the next bits of the stream.
class Codes {
 public:
  // Returns false if no code has these lengths.
  bool build(const unsigned char* lengths, std::size_t count) {
    return fillCodeTable(lengths, count, table_, [](std::size_t symbol, unsigned length) {
      return Code{static_cast<std::uint16_t>(symbol), static_cast<unsigned char>(length)};
    });
  }
  Code at(std::uint64_t bits) const { return table_[bits & (table_.size() - 1)]; }

 private:
  std::vector<Code> table_{Code{}};
};

// Works in steps. A step needs 32 bits at most, and is not begun without them unless the stream ends.
class Deflate64Decoder : public Decoder {
 public:
  Result decode(DecoderInput& input, DecoderOutput& output) override {
    while (state_ != State::End) {
      refill(input);
      const bool hasBits = ready_ >= kMostBits || (input.isLast && input.size == 0);
      if (state_ != State::Match && !hasBits) return Result::Continues;
      if (output.size == 0 && writesNext()) return Result::Continues;
      if (!step(output) || isPastEnd_) return Result::Damaged;
    }
    return Result::Ended;
  }

 private:
  enum class State {
    Block,
    StoredSize,
    Stored,
    Counts,
    CodeLengths,
    Lengths,
    Symbol,
    Distance,
    Match,
    End
  };

  static constexpr unsigned kMostBits = 32;

  // Returns false if the stream is invalid.
  bool step(DecoderOutput& output) {
    switch (state_) {
      case State::Block:
        return beginBlock();
      case State::StoredSize:
        return beginStored();
      case State::Stored:
        if (left_ == 0) return endBlock();
        --left_;
        put(static_cast<unsigned char>(take(8)), output);
        return true;
      case State::Counts:
        return readCounts();
      case State::CodeLengths:
        return readCodeLength();
      case State::Lengths:
        return readLength();
      case State::Symbol:
        return readSymbol(output);
      case State::Distance:
        return readDistance();
      case State::Match:
        copyMatch(output);
        return true;
      case State::End:
        break;
    }
    return false;
  }

  // Reports whether the next step needs space.
  bool writesNext() const {
    if (state_ == State::Symbol) return symbols_.at(bits_).symbol < kEndOfBlock;
    return state_ == State::Match || (state_ == State::Stored && left_ > 0);
  }

  void refill(DecoderInput& input) {
    while (ready_ <= 56 && input.size > 0) {
      bits_ |= std::uint64_t{*input.bytes} << ready_;
      ready_ += 8;
      input.skip(1);
    }
  }
  unsigned take(unsigned count) {
    const auto value = static_cast<unsigned>(bits_ & ((std::uint64_t{1} << count) - 1));
    bits_ >>= count;
    isPastEnd_ = isPastEnd_ || ready_ < count;
    ready_ -= std::min(ready_, count);
    return value;
  }
  void put(unsigned char byte, DecoderOutput& output) {
    window_[written_++ % kWindow] = byte;
    *output.bytes = byte;
    output.skip(1);
  }

  bool beginBlock() {
    isLast_ = take(1) != 0;
    switch (take(2)) {
      case 0:
        take(ready_ % 8);
        state_ = State::StoredSize;
        return true;
      case 1:
        state_ = State::Symbol;
        return buildFixedCodes();
      case 2:
        state_ = State::Counts;
        return true;
      default:
        return false;
    }
  }
  bool endBlock() {
    state_ = isLast_ ? State::End : State::Block;
    return true;
  }

  bool beginStored() {
    left_ = take(16);
    state_ = State::Stored;
    return take(16) == (left_ ^ 0xFFFFU);
  }

  bool buildFixedCodes() {
    lengths_.fill(8);
    std::fill(lengths_.begin() + 144, lengths_.begin() + 256, static_cast<unsigned char>(9));
    std::fill(lengths_.begin() + 256, lengths_.begin() + 280, static_cast<unsigned char>(7));
    std::fill(lengths_.begin() + kLengthSymbols, lengths_.end(), static_cast<unsigned char>(5));
    return symbols_.build(lengths_.data(), kLengthSymbols) &&
           distances_.build(lengths_.data() + kLengthSymbols, kDistanceSymbols);
  }

  bool readCounts() {
    symbolCount_ = take(5) + 257;
    lengthCount_ = symbolCount_ + take(5) + 1;
    codeLengthCount_ = take(4) + 4;
    codeLengths_.fill(0);
    index_ = 0;
    state_ = State::CodeLengths;
    return symbolCount_ <= kLengthSymbols;
  }
  bool readCodeLength() {
    constexpr unsigned char kOrder[] = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                        11, 4,  12, 3, 13, 2, 14, 1, 15};
    codeLengths_[kOrder[index_]] = static_cast<unsigned char>(take(3));
    if (++index_ < codeLengthCount_) return true;
    index_ = 0;
    state_ = State::Lengths;
    return symbols_.build(codeLengths_.data(), codeLengths_.size());
  }
  // Reads a code length, which is compressed with a code of its own, or a repetition of one.
  bool readLength() {
    const Code code = symbols_.at(bits_);
    if (code.bits == 0) return false;
    take(code.bits);
    unsigned repeats = 1;
    auto value = static_cast<unsigned char>(code.symbol);
    if (code.symbol >= 16) {
      if (code.symbol == 16 && index_ == 0) return false;
      value = code.symbol == 16 ? lengths_[index_ - 1] : static_cast<unsigned char>(0);
      repeats = code.symbol == 16 ? 3 + take(2) : code.symbol == 17 ? 3 + take(3) : 11 + take(7);
    }
    if (repeats > lengthCount_ - index_) return false;
    std::fill_n(lengths_.begin() + index_, repeats, value);
    index_ += repeats;
    if (index_ < lengthCount_) return true;
    state_ = State::Symbol;
    return distances_.build(lengths_.data() + symbolCount_, lengthCount_ - symbolCount_) &&
           symbols_.build(lengths_.data(), symbolCount_);
  }

  bool readSymbol(DecoderOutput& output) {
    const Code code = symbols_.at(bits_);
    if (code.bits == 0 || code.symbol > kLastLength) return false;
    take(code.bits);
    if (code.symbol < kEndOfBlock) {
      put(static_cast<unsigned char>(code.symbol), output);
      return true;
    }
    if (code.symbol == kEndOfBlock) return endBlock();
    left_ = matchLength(code.symbol - kEndOfBlock - 1);
    state_ = State::Distance;
    return true;
  }
  // `index` is 0 to 28.
  unsigned matchLength(unsigned index) {
    if (index < 8) return index + 3;
    if (index == kLastLength - kEndOfBlock - 1) return take(16) + 3;
    const unsigned extra = index / 4 - 1;
    return ((4 + index % 4) << extra) + 3 + take(extra);
  }
  bool readDistance() {
    const Code code = distances_.at(bits_);
    if (code.bits == 0) return false;
    take(code.bits);
    const unsigned symbol = code.symbol;
    const unsigned extra = symbol < 4 ? 0 : symbol / 2 - 1;
    distance_ = symbol < 4 ? symbol + 1 : ((2 + symbol % 2) << extra) + 1 + take(extra);
    state_ = State::Match;
    return distance_ <= written_;
  }
  void copyMatch(DecoderOutput& output) {
    for (; left_ > 0 && output.size > 0; --left_) {
      put(window_[(written_ - distance_) % kWindow], output);
    }
    if (left_ == 0) state_ = State::Symbol;
  }

  State state_ = State::Block;
  bool isLast_ = false;  // the block
  std::uint64_t bits_ = 0;
  unsigned ready_ = 0;  // number of these bits
  bool isPastEnd_ = false;
  std::vector<unsigned char> window_ = std::vector<unsigned char>(kWindow);
  std::uint64_t written_ = 0;
  unsigned left_ = 0;  // bytes of a stored block or of a match
  unsigned distance_ = 0;
  unsigned symbolCount_ = 0, lengthCount_ = 0, codeLengthCount_ = 0, index_ = 0;
  std::array<unsigned char, 19> codeLengths_{};
  std::array<unsigned char, kLengthSymbols + kDistanceSymbols> lengths_{};
  Codes symbols_;
  Codes distances_;
};

}  // namespace

std::unique_ptr<Decoder> makeDeflate64Decoder(const DecoderFacts&) {
  return std::make_unique<Deflate64Decoder>();
}

}  // namespace zip_engine
