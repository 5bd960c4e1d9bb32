// Entries with sizes of 64 bits, and those that may turn out to need them.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "engine/entries.h"
#include "support/programs.h"
#include "support/temporary_folder.h"
#include "zip/engine/container/end_record.h"
#include "zip/engine/container/entry_record.h"

namespace {

using namespace entries;
using zip_engine::Bytes;

class Zip64 : public testing::Test {
 protected:
  support::TemporaryFolder folder_;
  std::string path_ = folder_.file("a.zip");
};

// The zip64 blocks of an archive with one entry, whose fields of 32 bits refer to them.
struct Blocks {
  std::uint64_t localUncompressed = 4;
  std::uint64_t localCompressed = 4;
  std::uint64_t uncompressed = 4;
  std::uint64_t compressed = 4;
  std::uint64_t offset = 0;
  std::uint16_t localLength = 16;
  std::uint16_t length = 24;
};

std::string archiveWith(const Blocks& blocks) {
  zip_engine::EntryRecord record;
  record.crc = ZipCrc32(0, "data", 4);
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
  appendCentralRecord(out, record, 0);
  for (const std::size_t field : {20, 24, 42}) zip_engine::store32(&out[directory + field], ~0U);
  const std::size_t size = out.size() - directory;
  zip_engine::appendEndRecords(out, directory, size, 1, "");
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
    const Reader reader(ZipOpenReader(path_.c_str()));
    ASSERT_EQ(ZipFirstEntry(reader.get()), 0);
    EXPECT_LE(ZipUnusedBytes(reader.get()), 4U);
    ZipWriter* writer = ZipOpenWriter(copy.c_str(), ZipModeCreate);
    EXPECT_EQ(ZipCopyEntry(writer, reader.get(), nullptr, nullptr) == 0, row.isCopied);
    EXPECT_EQ(ZipCloseWriter(writer, nullptr), 0);
    EXPECT_EQ(readArchive(copy), row.isCopied ? (Entries{{"e", content}}) : Entries{});
    writer = ZipOpenWriter(path_.c_str(), ZipModeAppend);
    EXPECT_EQ(writer != nullptr, row.isAppendedTo);
    ZipAbandonWriter(writer);
  }
}

// An entry whose size is not announced gets a zip64 block, unless it was complete before its header
// was written.
TEST_F(Zip64, EntriesOfUnknownSizeMayPassFourGigabytes) {
  constexpr std::size_t kSmall = 4 << 20;
  const std::string block("\1\0\20\0", 4);
  for (const char* password : {static_cast<const char*>(nullptr), "secret"}) {
    for (const int encryption : {ZipEncryptTraditional, ZipEncryptAes256}) {
      if (password == nullptr && encryption != ZipEncryptTraditional) continue;
      if (ZipCheckEncryption(encryption) != 0) continue;
      for (const bool isCrcKnown : {true, false}) {
        for (const int level : {0, 6}) {
          for (const std::size_t size : {std::size_t{0}, kSmall, kSmall + 1}) {
            SCOPED_TRACE(testing::Message() << encryption << isCrcKnown << level << ' ' << size);
            const std::string content = repetitiveText(size);
            ZipWriter* const writer = ZipOpenWriter(path_.c_str(), ZipModeCreate);
            ASSERT_EQ(ZipSetEncryption(writer, encryption), 0);
            ZipSetUnknownCrc(writer, isCrcKnown ? 0 : 1);
            ASSERT_TRUE(addEntry(writer, "e", content, password, level, false));
            ASSERT_TRUE(addEntry(writer, "after", "x", password, level, false));
            ASSERT_EQ(ZipCloseWriter(writer, nullptr), 0);
            EXPECT_EQ(readArchive(path_), (Entries{{"e", content}, {"after", "x"}}));
            EXPECT_EQ(support::readFile(path_).find(block) == 31, size > kSmall);
            for (const std::string checker : support::kCheckers) {
              const bool isSlow = checker.starts_with("python3") && password != nullptr;
              if (isSlow || encryption == ZipEncryptAes256) continue;
              EXPECT_EQ(support::run(folder_.path(), checker + "a.zip"), 0) << checker;
            }
            EXPECT_EQ(support::run(folder_.path(), "bsdtar --passphrase secret -xOf a.zip >all"),
                      0);
            EXPECT_EQ(support::readFile(folder_.file("all")), content + 'x');
            const std::string copy = folder_.file("copy.zip");
            copyArchive(path_, copy, "");
            EXPECT_EQ(readArchive(copy), (Entries{{"e", content}, {"after", "x"}}));
            EXPECT_EQ(support::readFile(copy).find(block), std::string::npos);
          }
        }
      }
    }
  }
}

// Where the fields leave no space for the block, the entry is as before.
TEST_F(Zip64, LongFieldsLeaveNoSpaceForTheBlock) {
  const std::string fields(65535, '\0');
  for (const std::uint32_t local : {65515, 65516}) {
    ZipWriter* const writer = ZipOpenWriter(path_.c_str(), ZipModeCreate);
    ASSERT_EQ(ZipOpenNewEntry(writer, "e", nullptr, fields.data(), local, nullptr, 0, nullptr,
                              ZipMethodDeflate, 1, 0, -15, 8, 0, nullptr, 0),
              0);
    const std::string content((4 << 20) + 1, 'x');
    EXPECT_EQ(ZipWriteEntry(writer, content.data(), static_cast<std::uint32_t>(content.size())), 0);
    EXPECT_EQ(ZipCloseNewEntry(writer), 0);
    EXPECT_EQ(ZipCloseWriter(writer, nullptr), 0);
    EXPECT_EQ(readArchive(path_), (Entries{{"e", content}}));
    EXPECT_EQ(support::readFile(path_).find(std::string("\1\0\20\0", 4)) == 31, local == 65515);
  }
}

}  // namespace
