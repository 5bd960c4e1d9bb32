#pragma once
// The content of one entry: its stored bytes, decrypted and inflated.

#include <cstdint>
#include <memory>
#include <optional>

#include "platform/large_memory.h"
#include "zip/engine/cipher/aes.h"
#include "zip/engine/cipher/crypto.h"
#include "zip/engine/codec/codec.h"
#include "zip/engine/codec/methods.h"
#include "zip/engine/container/archive_file.h"
#include "zip/engine/container/format.h"

namespace zip_engine {

// Position and size of an entry's stored bytes, and the values that its content must have.
struct EntryLayout {
  std::uint64_t position;        // absolute, of the stored bytes
  std::uint64_t compressedSize;  // with the encryption header
  std::uint64_t uncompressedSize;
  std::uint32_t crc;
  const Method* method;  // a readable one, unless `raw` is set
  std::uint16_t flags;
  bool raw;                          // the stored bytes are the content
  const char* password;              // null if not encrypted
  std::optional<AesParameters> aes;  // nothing for the traditional encryption
  unsigned char checkByte;           // last byte of the decrypted encryption header
};

// Memory that one entry after the other uses.
struct EntryBuffers {
  platform::ReusableBuffer stored;  // for stored bytes that are needed whole
  BufferInflater inflater;
};

class EntryData {
 public:
  EntryData(const ArchiveFile& file, const EntryLayout& layout, EntryBuffers& buffers);
  EntryData(const EntryData&) = delete;
  EntryData& operator=(const EntryData&) = delete;
  ~EntryData();

  // Passes the first stored bytes if they were read before. Called before begin().
  void prefetched(const unsigned char* bytes, std::size_t size);
  // Reads the encryption header. Returns false if it cannot be read or the password is wrong.
  bool begin();
  // Returns the number of bytes read, 0 at the end, a negative status on failure. The last byte of
  // the entry is delivered only if length and CRC-32 are right.
  int read(unsigned char* buffer, std::uint32_t size);

 private:
  bool readVerified(unsigned char* out, std::size_t size);
  bool readStored(unsigned char* out, std::size_t size);
  bool readDecoded(unsigned char* out, std::size_t size);
  bool decodeWhole(unsigned char* out);
  bool makeDecoder();
  bool decode(unsigned char* out, std::size_t size);
  bool refill();
  bool beginAes();
  bool isAuthentic();
  bool isWhole();
  bool endsHere();

  const ArchiveFile& file_;
  EntryBuffers& buffers_;
  EntryLayout layout_;
  std::optional<TraditionalCipher> cipher_;
  std::optional<AesCipher> aes_;
  Bytes ahead_;  // stored bytes that were read and not used yet
  std::size_t aheadUsed_ = 0;
  std::uint64_t storedLeft_;  // stored bytes that were not decoded yet
  std::uint64_t plainLeft_;
  std::uint32_t crc_ = 0;
  int status_ = 0;
  bool verified_ = false;
  Bytes whole_;  // the decoded content of a small entry
  std::unique_ptr<Decoder> decoder_;
  Bytes inputBlock_;
  DecoderInput input_;  // in that block
  bool hasEnded_ = false;
};

}  // namespace zip_engine
