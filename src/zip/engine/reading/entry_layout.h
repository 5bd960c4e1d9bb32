#pragma once
// Whether an entry can be read, and where its data are.

#include <cstdint>
#include <optional>

#include "zip/engine/cipher/aes.h"
#include "zip/engine/container/central_directory.h"
#include "zip/engine/reading/entry_data.h"

namespace zip_engine {

bool isEncrypted(const CentralRecord& record);
// The parameters of an entry that is encrypted with AES; nothing if they are not known.
std::optional<AesParameters> aesOf(const CentralRecord& record);
// The encryption, as ZipEntryDetails has it.
std::uint32_t encryptionOf(const CentralRecord& record);
// The compression method, inside an encryption with AES.
std::uint16_t innerMethodOf(const CentralRecord& record);

// Returns the status of opening the entry, as far as its record shows it. `password` is null for
// none.
int checkReadable(const CentralRecord& record, const char* password);

// `position` is that of the stored bytes.
EntryLayout layoutOf(const CentralRecord& record, std::uint64_t position, bool raw,
                     const char* password);

}  // namespace zip_engine
