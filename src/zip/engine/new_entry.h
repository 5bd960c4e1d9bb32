#pragma once
// An entry that is being written: its header, its data through compression and encryption, and the
// sizes and the CRC for its records.

#include <optional>

#include "zip/engine/crypto.h"
#include "zip/engine/entry_record.h"
#include "zip/engine/sampling_deflater.h"
#include "zip/engine/transaction.h"

namespace zip_engine {

struct NewEntryOptions {
  int level = ZipLevelDefault;
  bool raw = false;
  const char* password = nullptr;  // null for none; not used for raw data
  std::uint32_t expectedCrc = 0;   // of the plain data, with a password
};

class NewEntry {
 public:
  // Begins at the transaction's position.
  NewEntry(Transaction& archive, SamplingDeflater& deflater, EntryRecord record,
           const NewEntryOptions& options);

  bool write(const unsigned char* data, std::size_t size);
  // Complete the entry; a raw one with the size and the CRC of its plain data.
  bool finish();
  bool finishRaw(std::uint32_t uncompressedSize, std::uint32_t crc);

  const EntryRecord& record() const { return record_; }
  std::uint64_t start() const { return start_; }

 private:
  bool beginData();
  bool store(const unsigned char* bytes, std::size_t size);
  bool stored(std::size_t size);
  bool deflatePart(bool last);
  bool finishGathered();
  bool patchHeader();

  Transaction& archive_;
  SamplingDeflater& deflater_;
  EntryRecord record_;
  NewEntryOptions options_;
  std::uint64_t start_;
  std::optional<TraditionalCipher> cipher_;
  Bytes gathered_;  // plain data that may still be deflated in one piece
  bool begun_ = false;
  std::uint64_t plain_ = 0;
  std::uint64_t stored_ = 0;
  std::uint32_t crc_ = 0;
};

}  // namespace zip_engine
