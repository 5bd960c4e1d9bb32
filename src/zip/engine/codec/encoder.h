#pragma once
// Encoding the content of an entry piece by piece.

#include <cstddef>
#include <cstdint>
#include <optional>

#include "zip/engine/container/format.h"

namespace zip_engine {

// Encodes one entry after the other, and keeps its memory for the next one.
class Encoder {
 public:
  virtual ~Encoder() = default;
  // Begins an entry. `level` is -1 or 1 to 9. The size is known if all content is in memory; less
  // memory is then needed for a small one.
  virtual bool begin(int level, std::optional<std::size_t> size) = 0;
  // Appends what the bytes become, as far as it is known, and with `isLast` the end of the stream.
  virtual bool append(Bytes& out, const Bytes& plain, bool isLast) = 0;
};

}  // namespace zip_engine
