#pragma once
// The block structure of deflate streams (RFC 1951, section 3.2), for putting
// streams that were made one by one in a row.

#include "zip/engine/format.h"

namespace zip_engine {

// Makes the whole stream that `out` holds from `start` on one that goes on: its
// last block loses the mark of the last one, and an empty stored block fills its
// last byte. False, with `out` unspecified from there on, if it is no whole
// stream.
bool continueStream(Bytes& out, std::size_t start);

// Appends the bytes as stored blocks, none of them the last.
void appendStoredBlocks(Bytes& out, const unsigned char* plain, std::size_t size);

// Appends an empty last block.
void appendLastBlock(Bytes& out);

}  // namespace zip_engine
