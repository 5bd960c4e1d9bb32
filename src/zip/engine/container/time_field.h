#pragma once
// The time of a file's last write in UTC, in an extra field. The records themselves have a local
// time in steps of two seconds, and do not say of which time zone.
//
// Three fields are common: "UT" (0x5455) of Info-ZIP has seconds since 1970 in 32 bits, its
// predecessor "UX" (0x5855) too, and that of Windows programs (0x000A) 100 ns since 1601 in 64
// bits.

#include <cstdint>

#include "zip/engine/container/format.h"

namespace zip_engine {

// Returns the time in an extra field of a record or a local header, in 100 ns since 1601. It is 0 if
// the field has none.
std::uint64_t lastWriteIn(const unsigned char* extra, std::size_t size);

// Appends the time, in 100 ns since 1601, in seconds, or with all its parts if 32 bits do not have
// its seconds. Appends nothing for 0.
void appendLastWrite(Bytes& extra, std::uint64_t lastWrite);

}  // namespace zip_engine
