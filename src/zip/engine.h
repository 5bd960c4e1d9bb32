#pragma once
// The zip engine's interface: opaque readers and writers over one archive of
// the published format (PKWARE APPNOTE). Names are bytes in the OEM code page.
//
// A writer is a transaction. Entries that were completed become part of the
// archive at ZipCloseWriter; until then the file, at every instant, is the
// archive that it was before. An entry that cannot be completed is dropped; the others stay. Every
// call refuses a null reader or writer.

#include <cstdint>

struct ZipReader;
struct ZipWriter;
struct ZipPreparedEntry;

struct ZipGlobalInfo {
  std::uint32_t entryCount;
  std::uint32_t commentLength;
};

// Second, minute, hour, day, month from 0 to 11, year.
struct ZipDateWords {
  std::uint32_t second, minute, hour, day, month, year;
};

struct ZipEntryInfo {
  std::uint32_t versionMadeBy;
  std::uint32_t versionNeeded;
  std::uint32_t flags;
  std::uint32_t method;
  std::uint32_t dosDate;
  std::uint32_t crc;
  std::uint32_t compressedSize;  // 0xFFFFFFFF if it is larger, as is the next one
  std::uint32_t uncompressedSize;
  std::uint32_t nameLength;
  std::uint32_t centralExtraLength;
  std::uint32_t commentLength;
  std::uint32_t diskNumber;
  std::uint32_t internalAttributes;
  std::uint32_t externalAttributes;  // bit 0x10: folder
  ZipDateWords date;
};
static_assert(sizeof(ZipEntryInfo) == 80);

struct ZipNewEntryInfo {
  ZipDateWords date;  // used when dosDate is 0
  std::uint32_t dosDate;
  std::uint32_t internalAttributes;
  std::uint32_t externalAttributes;
};
static_assert(sizeof(ZipNewEntryInfo) == 36);

enum ZipWriterMode : int {
  ZipModeCreate = 0,       // a new archive; an existing file is replaced
  ZipModeAppendFirst = 1,  // an archive without entries, or an empty file
  ZipModeAppend = 2,       // any archive, or an empty file
};

enum ZipEncryption : int {
  ZipEncryptTraditional = 0,
  ZipEncryptAes256 = 1,  // WinZip's AE-2
};

// Failures of writing that are not those of the archive that is written. After any other one
// GetLastError() returns the system's reason, if there is one.
inline constexpr int ZipStatusTooLarge = 1;
inline constexpr int ZipStatusWrongCrc = 2;
inline constexpr int ZipStatusDamagedSource = -2;  // of ZipCopyEntry
inline constexpr int ZipStatusCancelled = -3;      // of ZipCopyEntry

inline constexpr int ZipMethodStored = 0;
inline constexpr int ZipMethodDeflate = 8;
inline constexpr int ZipMethodZstandard = 93;
inline constexpr int ZipLevelDefault = -1;

// Returns the usual name of a compression method, or an empty text.
const char* ZipMethodName(std::uint32_t method);
// Return non-zero if the build reads or writes entries of a method.
int ZipCanRead(std::uint32_t method);
int ZipCanWrite(std::uint32_t method);

// Reading. Status 0 is success, any other one a failure.

// Failures of ZipOpenEntry and ZipReadEntry. Each of their other failures is that of damaged data.
// That a method needs too large a window, or that the build lacks a variant of it, is known only
// when its data are read.
inline constexpr int ZipStatusDamaged = -1;
inline constexpr int ZipStatusNoEntry = -100;
inline constexpr int ZipStatusNoPassword = -101;
inline constexpr int ZipStatusWrongPassword = -102;  // or the data after the check are damaged
inline constexpr int ZipStatusUnknownMethod = -103;
inline constexpr int ZipStatusUnknownEncryption = -104;
inline constexpr int ZipStatusNoMemory = -105;

// Opens an archive by its last end record, as other programs do. Returns null if the file is
// missing or held without read sharing, or if that record does not lead to a sound directory.
ZipReader* ZipOpenReader(const char* path);
// Does the same, and makes the last entry of exactly that name the current one, in one pass over the
// directory. Returns null also if there is none. Other entries, and positions of records, are not
// known to this reader.
ZipReader* ZipOpenReaderAt(const char* path, const char* name);
void ZipCloseReader(ZipReader* reader);
int ZipReadGlobalInfo(ZipReader* reader, ZipGlobalInfo* info);
// Copies at most `length` bytes and returns their number, negative on failure.
int ZipReadGlobalComment(ZipReader* reader, char* buffer, std::uint32_t length);
// Make the first or next entry of the central directory the current one, and close an open entry.
// Return non-zero if there is none.
int ZipFirstEntry(ZipReader* reader);
int ZipNextEntry(ZipReader* reader);
// Makes the last entry of exactly that name the current one: what was added last is what counts.
// Returns non-zero if there is none. `caseMode` is 0.
int ZipLocateEntry(ZipReader* reader, const char* name, int caseMode);
// Reads the values of the current entry. Each target may be null with capacity 0. Texts are cut at
// their capacity and get a terminating zero if they are shorter; an extra field is cut too.
int ZipReadEntryInfo(ZipReader* reader, ZipEntryInfo* info, char* name, std::uint32_t nameCapacity,
                     void* extra, std::uint32_t extraCapacity, char* comment,
                     std::uint32_t commentCapacity);
// Values of the current entry that ZipEntryInfo cannot hold.
struct ZipEntryDetails {
  std::uint64_t compressedSize;
  std::uint64_t uncompressedSize;
  std::uint64_t position;    // of the record, from the start of the directory
  std::uint32_t method;      // of the content, inside an encryption
  std::uint32_t encryption;  // one of the next constants
  std::uint64_t lastWrite;   // in UTC, in 100 ns since 1601; 0 if only the date words are known
};
inline constexpr std::uint32_t ZipNotEncrypted = 0;
inline constexpr std::uint32_t ZipEncryptedTraditional = 1;
inline constexpr std::uint32_t ZipEncryptedAes = 2;
inline constexpr std::uint32_t ZipEncryptedUnknown = 3;

int ZipReadEntryDetails(ZipReader* reader, ZipEntryDetails* details);
// Makes the entry current whose record has that position. Returns non-zero if none has.
int ZipMoveToEntry(ZipReader* reader, std::uint64_t position);
// Returns the number of bytes between the last entry and the directory, and after the end record.
// They belong to no entry; an append that was interrupted leaves some.
std::uint64_t ZipUnusedBytes(ZipReader* reader);
// Reports whether a file that is no archive by itself is a part of one of several files.
bool ZipIsPartOfSplitArchive(const char* path);
// Opens the current entry for reading. Refuses unknown methods, a wrong or missing password, data
// that lies outside the file or overlaps another entry or the directory, and impossible sizes. A
// non-zero `raw` reads the stored bytes. `method` and `level` are not used.
int ZipOpenEntry(ZipReader* reader, int* method, int* level, int raw, const char* password);
// Returns the number of bytes read, 0 at the end, negative on failure. The last byte is delivered
// only if length and CRC-32 of the whole entry are right. A call reads at most INT_MAX bytes.
int ZipReadEntry(ZipReader* reader, void* buffer, std::uint32_t size);
// Copies the local extra field of the open entry and returns the number of bytes, or returns its
// length for (null, 0). Negative on failure.
int ZipReadLocalExtra(ZipReader* reader, void* buffer, std::uint32_t size);
void ZipCloseEntry(ZipReader* reader);

// Writing.

// Returns null if the file cannot be opened, or is in mode 1 or 2 neither a sound archive nor
// empty. Refused too are entries in mode 1; an entry that claims to extend past the directory,
// where new ones would be written; and an archive without entries that has bytes before its end
// record, since nothing shows what they are.
ZipWriter* ZipOpenWriter(const char* path, int mode);
// Returns non-zero if the build lacks an encryption.
int ZipCheckEncryption(int encryption);
// Chooses the encryption of the entries that are begun with a password; at first it is the
// traditional one. Returns non-zero if the build lacks it.
int ZipSetEncryption(ZipWriter* writer, int encryption);
// Chooses whether the names of the entries that are begun are stored with `/` in place of `\`, as
// the format says. Readers then still return them with `\`. At first they are stored unchanged.
void ZipSetSlashes(ZipWriter* writer, int slashes);
// Sets what ZipNewEntryInfo cannot hold of the entries that are begun: whether the upper half of the
// external attributes is a mode of Unix, and the time of the last write in UTC, in 100 ns since
// 1601. At first it is none, and the time is 0, which is not stored.
void ZipSetOrigin(ZipWriter* writer, int isUnix, std::uint64_t lastWrite);
// Chooses whether the CRC that is passed for entries with the traditional encryption is not used.
// They then get a data descriptor, and readers check their password against the time. At first it
// is used.
void ZipSetUnknownCrc(ZipWriter* writer, int isUnknown);
// Chooses that the commit of an archive that was created reaches the disk, or fails. That of an
// archive that was there does so anyway.
void ZipSetDurable(ZipWriter* writer);
// Announces the size of the content of the entry that is begun next. An entry without it, and one of
// 4 GiB - 1 MiB or more, gets a zip64 block with its sizes unless it turns out to have at most 4 MiB.
// One that was announced as smaller has less than 4 GiB - 1 bytes, both plain and stored, and so does
// a raw one, or one whose extra fields leave no space for the block.
void ZipSetSize(ZipWriter* writer, std::uint64_t size);
// Reports whether the archive had an entry of exactly that name when it was opened.
bool ZipHasEntry(ZipWriter* writer, const char* name);
// Calls `visit` with the name of each entry that the archive had when it was opened.
void ZipVisitNames(ZipWriter* writer, void (*visit)(const char* name, void* context),
                   void* context);
// Begins an entry, and drops an open one. `method` is one that ZipCanWrite() knows, unless `raw`; `level` is -1 or 0 to 9.
// With `raw` the data are written unchanged; they are encrypted if the entry is, and a non-null
// `password` then only sets the flag. `crc` is that of the plain data if `raw` is set, or if
// `password` is, the encryption is the traditional one, and the CRC is known. The three numbers after
// `raw`, -15, 8 and 0, are not used.
int ZipOpenNewEntry(ZipWriter* writer, const char* name, const ZipNewEntryInfo* info,
                    const void* localExtra, std::uint32_t localExtraLength,
                    const void* centralExtra, std::uint32_t centralExtraLength, const char* comment,
                    int method, int level, int raw, int windowBits, int memoryLevel, int strategy,
                    const char* password, std::uint32_t crc);
// Returns non-zero on failure, ZipStatusTooLarge if that is the reason; ZipCloseNewEntry then fails
// too.
int ZipWriteEntry(ZipWriter* writer, const void* data, std::uint32_t length);
// Completes the entry, or drops it on failure. Returns what ZipWriteEntry does, or
// ZipStatusWrongCrc if the CRC that was passed is not that of the data.
int ZipCloseNewEntry(ZipWriter* writer);
// Completes a raw entry with the size and the CRC of its plain data.
int ZipCloseRawEntry(ZipWriter* writer, std::uint32_t uncompressedSize, std::uint32_t crc);
// Drops the open entry, or else the entry that was completed last.
int ZipCancelNewEntry(ZipWriter* writer);
// Takes entries out of the directory of an archive that is open in mode 1 or 2: those for which
// `drops` returns true. Returns the number of those that stay. The bytes of the others remain in the
// file until it is rewritten; if none stays, the new entries take their place where they fit. Called
// at most once, before the first new entry. The commit then has the space for all new entries or
// fails.
std::uint32_t ZipDropEntries(ZipWriter* writer, bool (*drops)(const char* name, void* context),
                             void* context);
// Appends the reader's current entry as it is stored: data, date, attributes, extra fields and
// comment. Refuses an entry whose local header differs from the central record in size or CRC,
// since programs differ in which of the two they read. `advance`, unless it is null, is called with
// the size of each block that was copied; false ends the copy. On failure nothing of it is left.
int ZipCopyEntry(ZipWriter* writer, ZipReader* reader,
                 bool (*advance)(std::uint64_t size, void* context), void* context);
// Makes `run` deflate up to `workers` parts of a large entry in one call. It runs task(0) to
// task(count - 1) in any threads and in any order, and returns true when all have ended; it may leave
// some out. False fails the entry. The archive has the same bytes for any number of workers.
void ZipSetWorkers(ZipWriter* writer, std::uint32_t workers,
                   bool (*run)(std::uint32_t count,
                               void (*task)(std::uint32_t index, const void* taskContext),
                               const void* taskContext, void* context),
                   void* context);

// Preparing entries in memory, each in any thread, for a writer that appends them.

// The most bytes of content of an entry that is prepared. One that turns out to have more fails.
inline constexpr std::uint32_t ZipLargestPrepared = 4 << 20;
// Returns a writer without an archive, for the calls above that begin, write and complete entries, of
// which ZipTakePrepared returns the last one, and for ZipAbandonWriter.
ZipWriter* ZipOpenPreparer();
// Returns null if no entry was completed since the last call.
ZipPreparedEntry* ZipTakePrepared(ZipWriter* preparer);
void ZipFreePrepared(ZipPreparedEntry* entry);
// Returns the number of bytes of its content.
std::uint64_t ZipPreparedSize(const ZipPreparedEntry& entry);
// Appends the bytes that the entry would have if it were written by this writer. On failure nothing
// of it is left.
int ZipAppendPrepared(ZipWriter* writer, const ZipPreparedEntry& entry);

// Frees the writer, and leaves the file byte for byte what it was in modes 1 and 2.
void ZipAbandonWriter(ZipWriter* writer);
// Commits and frees the writer. A null comment keeps the archive's comment in modes 1 and 2; one of
// more than 65,535 bytes, or one that other programs may take for an end record, is refused;
// without a new entry either, the file is left as it was. On failure nothing is committed, and the
// archive is byte for byte what it was. What was committed in modes 1 and 2 survives a power failure.
int ZipCloseWriter(ZipWriter* writer, const char* globalComment);

// Continues the CRC-32 (ISO 3309) of the preceding data; returns the start value for (0, null, 0).
std::uint32_t ZipCrc32(std::uint32_t crc, const void* data, std::uint32_t length);
