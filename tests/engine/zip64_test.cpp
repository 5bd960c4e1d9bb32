// Entries with sizes of 64 bits, and those that may turn out to need them.

#include "engine/entries.h"
#include "zip/engine/container/end_record.h"
#include "zip/engine/container/entry_record.h"

namespace {

using namespace entries;
using zip_engine::Bytes;

using Zip64 = ArchiveTest;

// The zip64 blocks of an archive with one entry, whose fields of 32 bits refer to them.
struct Blocks {
  std::uint64_t localUncompressed = 4;
  std::uint64_t localCompressed = 4;
  std::uint64_t uncompressed = 4;
  std::uint64_t compressed = 4;
  std::uint64_t offset = 0;
  std::uint16_t localLength = 16;
  std::uint16_t length = 24;
  std::uint32_t localCrc = ZipCrc32(0, "data", 4);
};

// With a comment, zip64 end records precede it.
std::string archiveWith(const Blocks& blocks, const std::string& comment = "") {
  zip_engine::EntryRecord record;
  record.crc = blocks.localCrc;
  record.name = "e";
  record.uncompressedSize = blocks.localUncompressed;
  record.compressedSize = blocks.localCompressed;
  record.hasZip64 = true;
  Bytes out;
  appendLocalHeader(out, record);
  zip_engine::store16(&out[33], blocks.localLength);
  out.insert(out.end(), {'d', 'a', 't', 'a'});
  // The extra field has its length in any case; what is left of it is no block.
  const std::size_t directory = out.size();
  zip_engine::append16(record.centralExtra, zip_engine::kZip64ExtraId);
  zip_engine::append16(record.centralExtra, blocks.length);
  for (const std::uint64_t value : {blocks.uncompressed, blocks.compressed, blocks.offset}) {
    zip_engine::append64(record.centralExtra, value);
  }
  record.uncompressedSize = record.compressedSize = 0;
  record.crc = ZipCrc32(0, "data", 4);
  appendCentralRecord(out, record, 0);
  for (const std::size_t field : {20U, 24U, 42U}) zip_engine::store32(&out[directory + field], ~0U);
  const std::size_t size = out.size() - directory;
  zip_engine::appendEndRecords(out, directory, size, 1, comment, !comment.empty());
  return {out.begin(), out.end()};
}

// What the records claim is never trusted: the entry is read, copied or followed by another one only
// if it is where they say.
TEST_F(Zip64, ValuesMustAgree) {
  constexpr std::uint64_t kHalf = std::uint64_t{1} << 63;
  constexpr std::uint64_t kMost = UINT64_MAX;
  const struct {
    const char* name;
    Blocks blocks;
    bool isRead;
    bool isCopied;
    bool isAppendedTo;
  } kRows[] = {
      {"equal", {}, true, true, true},
      {"local CRC", {.localCrc = 1}, true, false, true},
      {"local size", {.localUncompressed = 5}, true, false, true},
      {"local stored size", {.localCompressed = 5}, true, false, true},
      {"local size of 2^64 + 4", {.localUncompressed = kMost}, true, false, true},
      {"local block of one value", {.localLength = 8}, true, false, true},
      {"local block of no value", {.localLength = 0}, true, false, true},
      {"local block past its field", {.localLength = 17}, true, false, true},
      {"size", {.uncompressed = 5}, false, false, true},
      {"size past 4 GiB", {.uncompressed = (std::uint64_t{1} << 32) + 4}, false, false, true},
      {"size of 2^63", {.uncompressed = kHalf}, false, false, true},
      {"size of 2^64 - 1", {.uncompressed = kMost}, false, false, true},
      {"stored size past 4 GiB", {.compressed = (std::uint64_t{1} << 32) + 4}, false, false, false},
      {"stored size of 2^63", {.compressed = kHalf}, false, false, false},
      {"stored size of 2^64 - 1", {.compressed = kMost}, false, false, false},
      {"both of 2^64 - 1", {.uncompressed = kMost, .compressed = kMost}, false, false, false},
      {"both such that the end is 0",
       {.uncompressed = kMost - 30, .compressed = kMost - 30},
       false,
       false,
       false},
      {"offset of 2^63", {.offset = kHalf}, false, false, false},
      {"offset of 2^64 - 1", {.offset = kMost}, false, false, false},
      {"block of two values", {.length = 16}, false, false, false},
      {"block of one value", {.length = 8}, false, false, false},
      {"block of no value", {.length = 0}, false, false, false},
      {"block past its field", {.length = 25}, false, false, false},
  };
  const std::string copy = folder_.file("copy.zip");
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    support::writeFile(path_, archiveWith(row.blocks));
    const std::string content = row.isRead ? "data" : "<unreadable>";
    EXPECT_EQ(readArchive(path_), (Entries{{"e", content}}));
    Reader reader(ZipOpenReader(path_.c_str()));
    ASSERT_EQ(ZipFirstEntry(reader.get()), 0);
    EXPECT_LE(ZipUnusedBytes(reader.get()), 4U);
    ZipWriter* writer = ZipOpenWriter(copy.c_str(), ZipModeCreate);
    EXPECT_EQ(ZipCopyEntry(writer, reader.get(), nullptr, nullptr) == 0, row.isCopied);
    EXPECT_EQ(ZipCloseWriter(writer, nullptr), 0);
    EXPECT_EQ(readArchive(copy), row.isCopied ? (Entries{{"e", content}}) : Entries{});
    reader.reset();
    writer = ZipOpenWriter(path_.c_str(), ZipModeAppend);
    EXPECT_EQ(writer != nullptr, row.isAppendedTo);
    ZipAbandonWriter(writer);
  }
}

// Wherever the last bytes that are read first begin.
TEST_F(Zip64, EndRecordsMayBeFarFromTheEnd) {
  for (std::size_t length = 3900; length < 4150; ++length) {
    support::writeFile(path_, archiveWith({}, std::string(length, 'c')));
    EXPECT_EQ(readArchive(path_), (Entries{{"e", "data"}})) << length;
  }
}

// An entry whose size is not announced gets a zip64 block, unless it was complete before its header
// was written.
TEST_F(Zip64, EntriesOfUnknownSizeMayPassFourGigabytes) {
  constexpr std::size_t kSmall = 4 << 20;
  const auto hasBlock = [](const std::string& path) {
    return support::readFile(path).compare(31, 4, std::string("\1\0\20\0", 4)) == 0;
  };
  const struct {
    const char* password;
    int encryption;
    bool isCrcKnown;
  } kRows[] = {{nullptr, ZipEncryptTraditional, true},
               {"secret", ZipEncryptTraditional, true},
               {"secret", ZipEncryptTraditional, false},
               {"secret", ZipEncryptAes256, true}};
  for (const auto& row : kRows) {
    if (ZipCheckEncryption(row.encryption) != 0) continue;
    for (const int level : {0, 6}) {
      for (const std::size_t size : {std::size_t{0}, kSmall, kSmall + 1}) {
        SCOPED_TRACE(testing::Message() << &row - kRows << ' ' << level << ' ' << size);
        const Entries all{{"e", repetitiveText(size)}, {"after", "x"}};
        ZipWriter* const writer = ZipOpenWriter(path_.c_str(), ZipModeCreate);
        ASSERT_EQ(ZipSetEncryption(writer, row.encryption), 0);
        ZipSetUnknownCrc(writer, row.isCrcKnown ? 0 : 1);
        ASSERT_TRUE(addEntry(writer, "e", all.at("e"), row.password, level, false));
        ASSERT_TRUE(addEntry(writer, "after", "x", row.password, level, false));
        ASSERT_EQ(ZipCloseWriter(writer, nullptr), 0);
        EXPECT_EQ(readArchive(path_), all);
        EXPECT_EQ(hasBlock(path_), size > kSmall);
        const std::string copy = folder_.file("copy.zip");
        copyArchive(path_, copy, "");
        EXPECT_EQ(readArchive(copy), all);
        EXPECT_FALSE(hasBlock(copy));
        if (size <= kSmall) continue;
        shell("bsdtar --passphrase secret -xOf a.zip >all");
        EXPECT_TRUE(read("all") == all.at("e") + 'x');
        if (row.encryption == ZipEncryptAes256) continue;
        for (const std::string checker : support::kCheckers) {
          // It decrypts a megabyte a second.
          if (row.password != nullptr && checker.starts_with("python3")) continue;
          shell(checker + "a.zip");
        }
      }
    }
  }
}

// An archive with an entry whose content has 5 GiB, as its records claim. It is never read.
std::string archiveWithLargeEntry(bool hasDescriptor) {
  zip_engine::EntryRecord record;
  record.name = "large";
  record.method = ZipMethodDeflate;
  record.versionNeeded = zip_engine::kVersionZip64;
  record.crc = 7;
  record.compressedSize = 4;
  record.uncompressedSize = std::uint64_t{5} << 30;
  record.hasZip64 = true;
  zip_engine::EntryRecord local = record;
  if (hasDescriptor) {
    record.flags = zip_engine::kFlagDescriptor | zip_engine::kFlagEncrypted;
    local.flags = record.flags;
    local.crc = 0;
    local.compressedSize = local.uncompressedSize = 0;
  }
  Bytes out;
  appendLocalHeader(out, local);
  out.insert(out.end(), {'d', 'a', 't', 'a'});
  if (hasDescriptor) appendDescriptor(out, record);
  const std::size_t directory = out.size();
  appendCentralRecord(out, record, 0);
  const std::size_t size = out.size() - directory;
  zip_engine::appendEndRecords(out, directory, size, 1, "");
  return {out.begin(), out.end()};
}

TEST_F(Zip64, LargeEntriesAreCopied) {
  for (const bool hasDescriptor : {false, true}) {
    support::writeFile(path_, archiveWithLargeEntry(hasDescriptor));
    copyArchive(path_, folder_.file("copy.zip"), "");
    EXPECT_TRUE(read("copy.zip") == support::readFile(path_));
  }
}

// Entries that take the place of others are first written after them, where offsets have 64 bits.
TEST_F(Zip64, LargeEntriesMoveToTheStart) {
  if (!support::fileSystem().largeFiles) GTEST_SKIP() << "no sparse files here";
  const std::string large = folder_.file("large.zip");
  support::writeFile(large, archiveWithLargeEntry(false));
  zip_engine::EntryRecord old;
  old.name = "old";
  Bytes directory;
  appendCentralRecord(directory, old, 0);
  const std::uint64_t position = std::uint64_t{6} << 30;
  const std::size_t size = directory.size();
  zip_engine::appendEndRecords(directory, position, size, 1, "");
  Bytes start;
  appendLocalHeader(start, old);
  support::writeFile(path_, std::string(start.begin(), start.end()));
  std::filesystem::resize_file(path_, position);
  std::ofstream(path_, std::ios::app | std::ios::binary)
      << std::string(directory.begin(), directory.end());

  ZipWriter* const writer = ZipOpenWriter(path_.c_str(), ZipModeAppend);
  ASSERT_NE(writer, nullptr);
  EXPECT_EQ(ZipDropEntries(
                writer, [](const char*, void*) { return true; }, nullptr),
            0U);
  {
    const Reader reader(ZipOpenReader(large.c_str()));
    ASSERT_EQ(ZipFirstEntry(reader.get()), 0);
    EXPECT_EQ(ZipCopyEntry(writer, reader.get(), nullptr, nullptr), 0);
  }
  EXPECT_EQ(ZipCloseWriter(writer, nullptr), 0);
  EXPECT_LT(std::filesystem::file_size(path_), 1000U);
  const Reader reader(ZipOpenReader(path_.c_str()));
  ASSERT_EQ(ZipFirstEntry(reader.get()), 0);
  ZipEntryDetails details{};
  EXPECT_EQ(ZipReadEntryDetails(reader.get(), &details), 0);
  EXPECT_EQ(details.uncompressedSize, std::uint64_t{5} << 30);
  EXPECT_EQ(details.compressedSize, 4U);
  EXPECT_EQ(ZipOpenEntry(reader.get(), nullptr, nullptr, 1, nullptr), 0);
  std::string data(4, '\0');
  EXPECT_EQ(ZipReadEntry(reader.get(), data.data(), 4), 4);
  EXPECT_EQ(data, "data");
}

}  // namespace
