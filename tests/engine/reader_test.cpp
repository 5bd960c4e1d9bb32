// The reading calls.

#include "engine/entries.h"
#include "zip/engine/cipher/aes.h"

namespace {

using namespace entries;
using namespace std::string_literals;

class EngineReader : public ArchiveTest {
 protected:
  // Opens the archive with its first entry as the current one.
  Reader first() const {
    Reader reader(ZipOpenReader(path_.c_str()));
    EXPECT_EQ(ZipFirstEntry(reader.get()), 0);
    return reader;
  }
};

TEST_F(EngineReader, CutsTextsAtTheCapacity) {
  // More than is usually read with a header.
  const std::string extra = noise(5000, 1);
  ZipWriter* const writer = ZipOpenWriter(path_.c_str(), ZipModeCreate);
  ZipOpenNewEntry(writer, "name", nullptr, extra.data(), 5000, extra.data(), 5, "note",
                  ZipMethodStored, 0, 0, -15, 8, 0, nullptr, 0);
  EXPECT_EQ(ZipCloseNewEntry(writer), 0);
  EXPECT_EQ(ZipCloseWriter(writer, "all of"), 0);
  const Reader reader = first();
  EXPECT_EQ(ZipOpenEntry(reader.get(), nullptr, nullptr, 0, nullptr), 0);
  EXPECT_LT(ZipReadEntry(reader.get(), nullptr, 1), 0);
  EXPECT_EQ(ZipReadLocalExtra(reader.get(), nullptr, 0), 5000);
  for (const std::uint32_t size : {0U, 3U, 4U, 5U, 6U, 5001U}) {
    const auto cut = [&](const std::string& text) {
      std::string start = text.substr(0, size);
      start.resize(6000, '.');
      return start;
    };
    std::string name(6000, '.'), central = name, comment = name, local = name, global = name;
    ZipReadEntryInfo(reader.get(), nullptr, name.data(), size, central.data(), size, comment.data(),
                     size);
    EXPECT_EQ(ZipReadLocalExtra(reader.get(), local.data(), size), std::min(size, 5000U));
    EXPECT_EQ(ZipReadGlobalComment(reader.get(), global.data(), size), std::min(size, 6U));
    EXPECT_EQ(name, cut("name\0"s));
    EXPECT_EQ(comment, cut("note\0"s));
    EXPECT_TRUE(central == cut(extra.substr(0, 5)));
    EXPECT_TRUE(local == cut(extra));
    EXPECT_EQ(global, cut("all of\0"s));
  }
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
  shell(kMaker);
  const std::string names = "0abcd1";
  for (std::size_t first = 0; first < names.size(); ++first) {
    const Reader reader(ZipOpenReader(path_.c_str()));
    for (std::size_t i = first; i < first + names.size(); ++i) {
      const std::string name(1, names[i % names.size()]);
      std::string content;
      ASSERT_EQ(ZipLocateEntry(reader.get(), name.c_str(), 0), 0);
      EXPECT_EQ(readCurrent(reader.get(), content, 10), name < "a") << names[first] << name;
      EXPECT_EQ(readAlone(path_, name, content, 10), name < "a") << name;
    }
  }
}

// Where the records seem to be in order.
TEST_F(EngineReader, ReadsNoEntryThatReachesAnother) {
  // Each change of the archive makes `bad` reach another entry.
  const std::pair<const char*, const char*> kArchives[] = {
      {"into the next entry, with a longer extra field", R"(
archive = bytearray(open("a.zip", "rb").read())
local, central = archive.index(b"PK\3\4"), archive.index(b"PK\1\2")
archive[local + 28] = 5
crc = struct.pack("<I", zlib.crc32(archive[local + 38:local + 48]))
archive[local + 14:local + 18] = archive[central + 16:central + 20] = crc
open("a.zip", "wb").write(archive))"},
      {"from within another entry, with a zip64 offset", R"(
inner = io.BytesIO()
with zipfile.ZipFile(inner, "w") as z: z.writestr("bad", "inner")
with zipfile.ZipFile("a.zip", "w") as z:
    for name in "good", *map(str, range(20)): z.writestr(name, "x")
    z.writestr("outer", inner.getvalue())
    zipfile.ZIP64_LIMIT = z.getinfo("outer").header_offset
    [info] = zipfile.ZipFile(inner).infolist()
    info.header_offset += zipfile.ZIP64_LIMIT + 35
    z.filelist.append(info))"},
  };
  for (const auto& [name, change] : kArchives) {
    SCOPED_TRACE(name);
    write("make.py", R"(import io, struct, zipfile, zlib
with zipfile.ZipFile("a.zip", "w") as z: z.writestr("bad", "0123456789"), z.writestr("good", "x"))"s +
                         change);
    shell("python3 make.py");
    const Reader reader(ZipOpenReader(path_.c_str()));
    std::string content;
    ASSERT_EQ(ZipLocateEntry(reader.get(), "bad", 0), 0);
    EXPECT_FALSE(readCurrent(reader.get(), content, 10));
    ASSERT_EQ(ZipLocateEntry(reader.get(), "good", 0), 0);
    EXPECT_TRUE(readCurrent(reader.get(), content, 10));
    EXPECT_FALSE(readAlone(path_, "bad", content, 10));
    EXPECT_TRUE(readAlone(path_, "good", content, 10));
  }
}

// The directory is several times as long as what is read of it at once.
TEST_F(EngineReader, KeepsNoRecordsButThoseOfItsEntry) {
  Entries many;
  for (int i = 0; i < 3000; ++i) many.emplace(std::to_string(i), "");
  writeArchive(path_, many);
  const Reader reader(ZipOpenReaderAt(path_.c_str(), "1500"));
  std::vector<std::string> kept;
  forEachEntry(reader.get(), [&](const std::string& name) { kept.push_back(name); });
  EXPECT_EQ(kept, (std::vector<std::string>{"1500", "1501"}));
}

TEST_F(EngineReader, NoCallTakesANullReaderOrWriter) {
  ZipReader* const noReader = nullptr;
  ZipWriter* const noWriter = nullptr;
  writeArchive(path_, {{"e", "x"}}, ZipModeCreate);
  const Reader reader = first();
  ZipGlobalInfo global;
  ZipEntryDetails details;
  char byte = 0;
  EXPECT_NE(ZipReadGlobalInfo(noReader, &global), 0);
  EXPECT_NE(ZipReadGlobalInfo(reader.get(), nullptr), 0);
  EXPECT_LT(ZipReadGlobalComment(noReader, &byte, 1), 0);
  EXPECT_NE(ZipFirstEntry(noReader), 0);
  EXPECT_NE(ZipNextEntry(noReader), 0);
  EXPECT_NE(ZipLocateEntry(noReader, "e", 0), 0);
  EXPECT_NE(ZipLocateEntry(reader.get(), nullptr, 0), 0);
  EXPECT_NE(ZipReadEntryInfo(noReader, nullptr, nullptr, 0, nullptr, 0, nullptr, 0), 0);
  EXPECT_NE(ZipReadEntryDetails(noReader, &details), 0);
  EXPECT_NE(ZipReadEntryDetails(reader.get(), nullptr), 0);
  EXPECT_NE(ZipMoveToEntry(noReader, 0), 0);
  EXPECT_EQ(ZipUnusedBytes(noReader), 0U);
  EXPECT_NE(ZipOpenEntry(noReader, nullptr, nullptr, 0, nullptr), 0);
  EXPECT_LT(ZipReadEntry(noReader, &byte, 1), 0);
  EXPECT_LT(ZipReadLocalExtra(noReader, &byte, 1), 0);
  EXPECT_EQ(ZipOpenReader(nullptr), nullptr);
  ZipCloseEntry(noReader);
  ZipCloseReader(noReader);

  ZipWriter* const writer = ZipOpenWriter((path_ + ".other").c_str(), ZipModeCreate);
  EXPECT_NE(ZipSetEncryption(noWriter, ZipEncryptTraditional), 0);
  ZipSetSlashes(noWriter, 1);
  ZipSetOrigin(noWriter, 1, 0);
  ZipSetUnknownCrc(noWriter, 1);
  ZipSetDurable(noWriter);
  ZipSetSize(noWriter, 1);
  EXPECT_FALSE(ZipHasEntry(noWriter, "e"));
  EXPECT_FALSE(ZipHasEntry(writer, nullptr));
  ZipVisitNames(noWriter, nullptr, nullptr);
  EXPECT_FALSE(addEntry(noWriter, "f", "x"));
  EXPECT_NE(ZipWriteEntry(noWriter, &byte, 1), 0);
  EXPECT_NE(ZipCloseNewEntry(noWriter), 0);
  EXPECT_NE(ZipCloseRawEntry(noWriter, 0, 0), 0);
  EXPECT_NE(ZipCancelNewEntry(noWriter), 0);
  EXPECT_EQ(ZipDropEntries(noWriter, nullptr, nullptr), 0U);
  EXPECT_NE(ZipCopyEntry(noWriter, reader.get(), nullptr, nullptr), 0);
  EXPECT_NE(ZipCopyEntry(writer, noReader, nullptr, nullptr), 0);
  ZipSetWorkers(noWriter, 1, nullptr, nullptr);
  EXPECT_EQ(ZipTakePrepared(noWriter), nullptr);
  ZipAbandonWriter(noWriter);
  EXPECT_NE(ZipCloseWriter(noWriter, nullptr), 0);
  EXPECT_EQ(ZipCloseWriter(writer, nullptr), 0);
}

}  // namespace
