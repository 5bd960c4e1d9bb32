// The reading calls.

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "engine/entries.h"
#include "support/programs.h"
#include "support/temporary_folder.h"
#include "zip/engine/cipher/aes.h"
#include "zip/engine/container/format.h"

namespace {

using namespace entries;
using namespace std::string_literals;

class EngineReader : public testing::Test {
 protected:
  // Opens the archive with its first entry as the current one.
  Reader first() const {
    Reader reader(ZipOpenReader(path_.c_str()));
    EXPECT_EQ(ZipFirstEntry(reader.get()), 0);
    return reader;
  }

  support::TemporaryFolder folder_;
  std::string path_ = folder_.file("a.zip");
};

TEST_F(EngineReader, RefusesMissingArguments) {
  writeArchive(path_, {});
  const Reader empty(ZipOpenReader(path_.c_str()));
  char byte = 0;
  for (ZipReader* const r : {static_cast<ZipReader*>(nullptr), empty.get()}) {
    for (const int status :
         {ZipFirstEntry(r), ZipNextEntry(r), ZipLocateEntry(r, "", 0),
          ZipReadEntryInfo(r, nullptr, &byte, 1, nullptr, 0, nullptr, 0),
          ZipOpenEntry(r, nullptr, nullptr, 0, nullptr), ZipReadEntry(r, &byte, 1),
          ZipReadLocalExtra(r, nullptr, 0), ZipReadGlobalInfo(r, nullptr),
          ZipReadGlobalComment(nullptr, &byte, 1), ZipLocateEntry(r, nullptr, 0)}) {
      EXPECT_LT(status, 0);
    }
    ZipCloseEntry(r);
  }
  ZipGlobalInfo info{};
  EXPECT_LT(ZipReadGlobalInfo(nullptr, &info), 0);
}

TEST_F(EngineReader, ShowsAndCutsTheFieldsOfARecord) {
  // More than is usually read with a header.
  const std::string extra = noise(5000, 1);
  ZipWriter* const writer = ZipOpenWriter(path_.c_str(), ZipModeCreate);
  ZipOpenNewEntry(writer, "name", nullptr, extra.data(), 5000, extra.data(), 5, "note",
                  ZipMethodStored, 0, 0, -15, 8, 0, nullptr, 0);
  EXPECT_EQ(ZipCloseNewEntry(writer), 0);
  EXPECT_EQ(ZipCloseWriter(writer, "all of"), 0);
  std::string bytes = support::readFile(path_);
  // All fields but lengths, sizes and the offset. Each part of the date is an odd number.
  for (std::size_t i = 4; i < 42; ++i) {
    if (i < 20 || i >= 34) bytes[bytes.find("PK\1\2") + i] = static_cast<char>(i ^ 0x65);
  }
  Reader reader = first();
  EXPECT_EQ(ZipOpenEntry(reader.get(), nullptr, nullptr, 0, nullptr), 0);
  EXPECT_LT(ZipReadEntry(reader.get(), nullptr, 1), 0);
  EXPECT_EQ(ZipReadLocalExtra(reader.get(), nullptr, 0), 5000);
  ZipEntryInfo info{};
  for (const std::uint32_t size : {0U, 3U, 4U, 5U, 6U, 5001U}) {
    const auto cut = [&](const std::string& text) {
      std::string start = text.substr(0, size);
      start.resize(6000, '.');
      return start;
    };
    std::string name(6000, '.'), central = name, comment = name, local = name, global = name;
    ZipReadEntryInfo(reader.get(), &info, name.data(), size, central.data(), size, comment.data(),
                     size);
    EXPECT_EQ(info.dosDate, 0U);
    EXPECT_EQ(info.internalAttributes, 0U);
    EXPECT_EQ(info.externalAttributes, 0U);
    EXPECT_EQ(ZipReadLocalExtra(reader.get(), local.data(), size), std::min(size, 5000U));
    EXPECT_EQ(ZipReadGlobalComment(reader.get(), global.data(), size), std::min(size, 6U));
    EXPECT_EQ(name, cut("name\0"s));
    EXPECT_EQ(comment, cut("note\0"s));
    EXPECT_TRUE(central == cut(extra.substr(0, 5)));
    EXPECT_TRUE(local == cut(extra));
    EXPECT_EQ(global, cut("all of\0"s));
  }
  support::writeFile(path_, bytes);
  reader = first();
  EXPECT_EQ(ZipReadEntryInfo(reader.get(), &info, nullptr, 0, nullptr, 0, nullptr, 0), 0);
  const ZipEntryInfo expected{0x6061,     0x6263, 0x6C6D, 0x6E6F,     0x6A6B6869,
                              0x76777475, 0,      0,      4,          5,
                              4,          0x4647, 0x4041, 0x4C4D4243, {18, 3, 13, 11, 2, 2033}};
  EXPECT_EQ(std::memcmp(&info, &expected, sizeof(info)), 0);
}

TEST_F(EngineReader, ReadsStoredBytes) {
  for (const int encryption : {ZipEncryptTraditional, ZipEncryptAes256}) {
    if (encryption == ZipEncryptAes256 && !zip_engine::hasAes()) continue;
    writeArchive(path_, {{"e", repetitiveText(90000)}}, ZipModeCreate, "secret", encryption);
    const Reader reader = first();
    EXPECT_EQ(ZipOpenEntry(reader.get(), nullptr, nullptr, 1, "secret"), 0);
    std::string stored(90000, '\0');
    stored.resize(static_cast<std::size_t>(ZipReadEntry(reader.get(), stored.data(), 90000)));
    EXPECT_EQ(ZipReadEntry(reader.get(), stored.data(), 1), 0);
    const std::string bytes = support::readFile(path_);
    EXPECT_EQ(bytes.find(stored), bytes.find("PK\1\2") - stored.size());
  }
}

// By a walk over the records, and by their sorted positions from the second entry on.
TEST_F(EngineReader, ReadsNoEntriesThatOverlap) {
  constexpr const char* kMaker = R"(python3 -c '
import io, zipfile
inner = io.BytesIO()
with zipfile.ZipFile(inner, "w") as z: [z.writestr(name, "inner") for name in ("b", "c")]
with zipfile.ZipFile("a.zip", "w") as z:
    for name, text in ("0", "x"), ("a", inner.getvalue()), ("d", "x"), ("1", "x"):
        z.writestr(name, text)
    for info in zipfile.ZipFile(inner).infolist():
        info.header_offset += z.getinfo("a").header_offset + 31
        z.filelist.append(info)
    z.filelist.append(z.getinfo("d"))
')";
  ASSERT_EQ(support::run(folder_.path(), kMaker), 0);
  const std::string names = "0abcd1";
  for (std::size_t first = 0; first < names.size(); ++first) {
    const Reader reader(ZipOpenReader(path_.c_str()));
    for (std::size_t i = first; i < first + names.size(); ++i) {
      const std::string name(1, names[i % names.size()]);
      std::string content;
      ASSERT_EQ(ZipLocateEntry(reader.get(), name.c_str(), 0), 0);
      EXPECT_EQ(readCurrent(reader.get(), content, 10), name < "a") << names[first] << name;
    }
  }
}

// A deflate stream must end after the last plain byte, also where it is inflated in pieces.
TEST_F(EngineReader, ReadsNoPartOfAStream) {
  const std::uint32_t size = 5 << 20;
  const std::string text = repetitiveText(size + 1);
  writeArchive(path_, {{"e", text}});
  std::string bytes = support::readFile(path_);
  unsigned char* const record = reinterpret_cast<unsigned char*>(&bytes[bytes.find("PK\1\2")]);
  zip_engine::store32(record + 16, ZipCrc32(0, text.data(), size));
  zip_engine::store32(record + 24, size);
  support::writeFile(path_, bytes);
  EXPECT_EQ(readArchive(path_), (Entries{{"e", "<unreadable>"}}));
}

}  // namespace
