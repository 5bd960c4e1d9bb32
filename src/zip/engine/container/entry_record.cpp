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

// The part that both records share, from "version needed" to the name's length.
void appendShared(Bytes& out, const EntryRecord& record, std::uint16_t versionNeeded) {
  append16(out, versionNeeded);
  append16(out, record.flags);
  append16(out, record.method);
  append32(out, record.dosDate);
  append32(out, record.crc);
  append32(out, record.compressedSize);
  append32(out, record.uncompressedSize);
  append16(out, static_cast<std::uint16_t>(record.name.size()));
}

}  // namespace

void appendLocalHeader(Bytes& out, const EntryRecord& record) {
  append32(out, kLocalSignature);
  appendShared(out, record, record.versionNeeded);
  append16(out, static_cast<std::uint16_t>(record.localExtra.size()));
  appendBytes(out, record.name);
  appendBytes(out, record.localExtra);
}

void appendDescriptor(Bytes& out, const EntryRecord& record) {
  append32(out, kDescriptorSignature);
  append32(out, record.crc);
  append32(out, record.compressedSize);
  append32(out, record.uncompressedSize);
}

void appendCentralRecord(Bytes& out, const EntryRecord& record, std::uint64_t localOffset) {
  const bool far = localOffset >= kSaturated32;
  append32(out, kCentralSignature);
  append16(out, record.versionMadeBy);
  appendShared(out, record,
               far ? std::max(record.versionNeeded, kVersionZip64) : record.versionNeeded);
  append16(out,
           static_cast<std::uint16_t>(record.centralExtra.size() + (far ? kZip64OffsetBlock : 0)));
  append16(out, static_cast<std::uint16_t>(record.comment.size()));
  append16(out, 0);
  append16(out, record.internalAttributes);
  append32(out, record.externalAttributes);
  append32(out, far ? kSaturated32 : static_cast<std::uint32_t>(localOffset));
  appendBytes(out, record.name);
  if (far) {
    append16(out, kZip64ExtraId);
    append16(out, kZip64OffsetBlock - 4);
    append64(out, localOffset);
  }
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
