#pragma once
// An entry that is being written: its header, its data through compression and encryption, and the
// sizes and the CRC for its records.

#include <optional>
#include <vector>

#include "zip/engine/cipher/aes.h"
#include "zip/engine/cipher/crypto.h"
#include "zip/engine/codec/methods.h"
#include "zip/engine/codec/part_deflater.h"
#include "zip/engine/codec/part_end.h"
#include "zip/engine/container/entry_record.h"
#include "zip/engine/writing/entry_output.h"

namespace zip_engine {

// The encoders of a writer, which one entry after the other uses.
struct Encoders {
  // Returns the encoder of a method that has one; null if memory is short.
  Encoder* of(const Method& method);

  PartDeflater deflater;

 private:
  const Method* method_ = nullptr;
  std::unique_ptr<Encoder> encoder_;
};

struct NewEntryOptions {
  int level;
  bool raw;
  const char* password;       // null for none; not used for raw data
  bool usesAes;               // with a password; else the traditional encryption
  bool knowsCrc;              // if not, an entry with that encryption gets a descriptor
  std::uint32_t expectedCrc;  // of the plain data, for the traditional encryption
  std::uint64_t size;         // of the plain data, 0 if it is not known
};

class NewEntry {
 public:
  // Begins at the output's position. If the record has a zip64 block, the entry gets it unless
  // it turns out to be small.
  NewEntry(EntryOutput& output, Encoders& encoders, EntryRecord record,
           const NewEntryOptions& options);

  bool write(const unsigned char* data, std::size_t size);
  // Complete the entry; a raw one with the size and the CRC of its plain data. Return false after a
  // write that failed.
  bool finish();
  bool finishRaw(std::uint32_t uncompressedSize, std::uint32_t crc);

  // True if a failure is that of an entry that its local header has no space for the sizes of.
  bool isTooLarge() const { return !record_.hasZip64 && needsZip64(stored_, plain_); }

  // True if the content was not the one whose CRC was passed.
  bool hasWrongCrc() const {
    return cipher_ && !hasDescriptor() && !failed_ && crc_ != expectedCrc_;
  }

  const EntryRecord& record() const { return record_; }
  std::uint64_t start() const { return start_; }

 private:
  // The most gathered bytes.
  std::size_t gatherLimit() const { return begun_ || gatheredParts_ > 0 ? partSize_ : wholeSize_; }
  bool hasDescriptor() const { return (record_.flags & kFlagDescriptor) != 0; }
  void beginEncryption(const NewEntryOptions& options);
  void setMethod(const Method& method);
  void encrypt(unsigned char* bytes, std::size_t size);
  void beginData();
  bool add(const unsigned char* bytes, std::size_t size);
  bool stored(std::size_t size);
  bool gather(const unsigned char* bytes, std::size_t size);
  bool store(const unsigned char* bytes, std::size_t size);
  bool encodeFirst(std::size_t size);
  bool encodePart(bool last);
  bool gatherPart(bool last);
  bool deflateParts(bool last);
  bool appendSmaller(Bytes& out);
  bool finishGathered();
  bool complete();
  bool patchHeader();

  EntryOutput& output_;
  PartDeflater& deflater_;
  Encoder* encoder_ = nullptr;  // null for stored and deflated data
  EntryRecord record_;
  std::uint64_t start_;
  int level_;
  PartEnd partEnd_;
  std::size_t partSize_;   // the largest
  std::size_t wholeSize_;  // the most plain data that is encoded in one piece
  bool raw_;
  std::uint32_t expectedCrc_;
  const Method* method_;  // asked for; inside the encryption; null for raw data
  std::optional<TraditionalCipher> cipher_;
  std::optional<AesCipher> aes_;
  Bytes encryptionHeader_;         // precedes encrypted data
  Bytes gathered_;                 // plain data that may still be deflated in one piece
  std::vector<Part> parts_;        // of the workers; their memory is used again
  std::size_t gatheredParts_ = 0;  // that are to be deflated
  bool begun_ = false;
  bool failed_ = false;
  std::uint64_t plain_ = 0;
  std::uint64_t stored_ = 0;
  std::uint32_t crc_ = 0;
};

}  // namespace zip_engine
