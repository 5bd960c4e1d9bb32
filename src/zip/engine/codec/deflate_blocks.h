#pragma once
// Joining deflate streams that were made one by one (RFC 1951, section 3.2).
//
// A large entry is deflated in parts of 64 KiB to 4 MiB by a library that takes whole buffers. Each
// part is a complete stream, but an entry must be one stream. Two streams cannot simply follow each
// other: the last block of the first one is marked as the last, and it ends within a byte, while
// the second one begins at its start. Deflating the whole entry in one call would need it in
// memory, and shifting all bits of the second stream would cost time. So the mark is removed, and
// an empty stored block, whose header is followed by padding to the next byte, fills the gap:
//
//   first stream   ... block |1| last block |        (ends at any bit of its last byte)
//   continued      ... block |0| last block |000|0..0|00 00 FF FF|
//                             ^ mark         ^   ^    ^ length of the stored block
//                               removed      |   to the end of the byte
//                                            header of a stored block
//   second stream                                                |... block |1| last block |
//
// To find the mark of the last block and the end of its bits, all codes of the stream are walked
// over. Nothing is decoded, so that this takes a small part of the time of inflating.

#include "zip/engine/container/format.h"

namespace zip_engine {

// Makes the stream that `out` holds from `start` on continue after its end, as described above.
// Returns false, with `out` unspecified from there on, if it is no complete stream.
bool continueStream(Bytes& out, std::size_t start);

// Appends the bytes as stored blocks, none of them the last.
void appendStoredBlocks(Bytes& out, const unsigned char* plain, std::size_t size);

// Appends an empty last block.
void appendLastBlock(Bytes& out);

}  // namespace zip_engine
