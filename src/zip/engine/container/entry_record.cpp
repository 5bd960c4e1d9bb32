#include "zip/engine/container/entry_record.h"

#include <algorithm>

namespace zip_engine {
namespace {

void appendBytes(Bytes& out, const std::string& text) {
  out.insert(out.end(), text.begin(), text.end());
}

void appendBytes(Bytes& out, const Bytes& bytes) {
  out.insert(out.end(), bytes.begin(), bytes.end());
}

std::uint32_t saturated(std::uint64_t value) {
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(value, kSaturated32));
}

// The zip64 block of an extra field, which has the values that 32 bits do not hold.
class Zip64Block {
 public:
  void add(std::uint64_t value) { values_[count_++] = value; }
  void addIfLarge(std::uint64_t value) {
    if (value >= kSaturated32) add(value);
  }
  // Without values there is no block.
  std::size_t size() const { return count_ == 0 ? 0 : kHeader + count_ * 8; }
  void append(Bytes& out) const {
    if (count_ == 0) return;
    append16(out, kZip64ExtraId);
    append16(out, static_cast<std::uint16_t>(size() - kHeader));
    for (std::size_t i = 0; i < count_; ++i) append64(out, values_[i]);
  }

 private:
  static constexpr std::size_t kHeader = 4;
  std::uint64_t values_[3] = {};
  std::size_t count_ = 0;
};

// The part that both records share, from "version needed" to the name's length.
void appendShared(Bytes& out, const EntryRecord& record, bool zip64, std::uint32_t compressedSize,
                  std::uint32_t uncompressedSize) {
  append16(out, zip64 ? std::max(record.versionNeeded, kVersionZip64) : record.versionNeeded);
  append16(out, record.flags);
  append16(out, record.method);
  append32(out, record.dosDate);
  append32(out, record.crc);
  append32(out, compressedSize);
  append32(out, uncompressedSize);
  append16(out, static_cast<std::uint16_t>(record.name.size()));
}

}  // namespace

void appendLocalHeader(Bytes& out, const EntryRecord& record) {
  // The block has both sizes, if it is there.
  Zip64Block block;
  if (record.hasZip64) {
    block.add(record.uncompressedSize);
    block.add(record.compressedSize);
  }
  const auto field = [&](std::uint64_t size) {
    return record.hasZip64 ? kSaturated32 : static_cast<std::uint32_t>(size);
  };
  append32(out, kLocalSignature);
  appendShared(out, record, record.hasZip64, field(record.compressedSize),
               field(record.uncompressedSize));
  append16(out, static_cast<std::uint16_t>(record.localExtra.size() + block.size()));
  appendBytes(out, record.name);
  block.append(out);
  appendBytes(out, record.localExtra);
}

void appendDescriptor(Bytes& out, const EntryRecord& record) {
  append32(out, kDescriptorSignature);
  append32(out, record.crc);
  if (record.hasZip64) {
    append64(out, record.compressedSize);
    append64(out, record.uncompressedSize);
  } else {
    append32(out, static_cast<std::uint32_t>(record.compressedSize));
    append32(out, static_cast<std::uint32_t>(record.uncompressedSize));
  }
}

void appendCentralRecord(Bytes& out, const EntryRecord& record, std::uint64_t localOffset) {
  Zip64Block block;
  block.addIfLarge(record.uncompressedSize);
  block.addIfLarge(record.compressedSize);
  block.addIfLarge(localOffset);
  append32(out, kCentralSignature);
  append16(out, record.versionMadeBy);
  appendShared(out, record, record.hasZip64 || block.size() != 0, saturated(record.compressedSize),
               saturated(record.uncompressedSize));
  append16(out, static_cast<std::uint16_t>(record.centralExtra.size() + block.size()));
  append16(out, static_cast<std::uint16_t>(record.comment.size()));
  append16(out, 0);
  append16(out, record.internalAttributes);
  append32(out, record.externalAttributes);
  append32(out, saturated(localOffset));
  appendBytes(out, record.name);
  block.append(out);
  appendBytes(out, record.centralExtra);
  appendBytes(out, record.comment);
}

std::uint32_t dosDateOf(const ZipDateWords& words) {
  constexpr std::uint32_t kFirstYear = 1980;
  constexpr std::uint32_t kLastYear = kFirstYear + 127;
  constexpr std::uint32_t kFirst = 1 << 21 | 1 << 16;
  constexpr std::uint32_t kLast = 127U << 25 | 12 << 21 | 31 << 16 | 23 << 11 | 59 << 5 | 29;
  if (words.year < kFirstYear) return kFirst;
  if (words.year > kLastYear) return kLast;
  const std::uint32_t month = std::min<std::uint32_t>(words.month, 11) + 1;
  const std::uint32_t day = std::clamp<std::uint32_t>(words.day, 1, 31);
  const std::uint32_t hour = std::min<std::uint32_t>(words.hour, 23);
  const std::uint32_t minute = std::min<std::uint32_t>(words.minute, 59);
  const std::uint32_t twoSeconds = std::min<std::uint32_t>(words.second / 2, 29);
  return (words.year - kFirstYear) << 25 | month << 21 | day << 16 | hour << 11 | minute << 5 |
         twoSeconds;
}

}  // namespace zip_engine
