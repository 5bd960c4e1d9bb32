// Names that other programs write, and names that other programs read.

#include "engine/entries.h"
#include "platform/code_page.h"
#include "zip/engine/container/cp437.h"
#include "zip/engine/container/end_record.h"
#include "zip/engine/container/entry_record.h"

namespace {

using namespace entries;
using namespace zip_engine;

std::string oem(const std::string& utf8) {
  return platform::convertCodePage(utf8, CP_UTF8, CP_OEMCP);
}

// An archive of a stored entry whose two records may differ, and of a usual one that follows it.
std::string archiveOf(EntryRecord local, EntryRecord central) {
  const std::string content = "content";
  Bytes bytes;
  EntryRecord next;
  next.name = "next";
  for (EntryRecord* record : {&local, &central, &next}) {
    record->compressedSize = record->uncompressedSize = content.size();
    record->crc = ZipCrc32(0, content.data(), static_cast<std::uint32_t>(content.size()));
  }
  appendLocalHeader(bytes, local);
  bytes.insert(bytes.end(), content.begin(), content.end());
  const std::size_t second = bytes.size();
  appendLocalHeader(bytes, next);
  bytes.insert(bytes.end(), content.begin(), content.end());
  const std::size_t position = bytes.size();
  appendCentralRecord(bytes, central, 0);
  appendCentralRecord(bytes, next, second);
  appendEndRecords(bytes, position, bytes.size() - position, 2, "");
  return {bytes.begin(), bytes.end()};
}

// The Unicode Path extra field of a name.
Bytes unicodePath(const std::string& name, const std::string& unicode, unsigned char version = 1) {
  Bytes field;
  append16(field, 0x7075);
  append16(field, static_cast<std::uint16_t>(5 + unicode.size()));
  field.push_back(version);
  append32(field, ZipCrc32(0, name.data(), static_cast<std::uint32_t>(name.size())));
  field.insert(field.end(), unicode.begin(), unicode.end());
  return field;
}

TEST(Names, OfCodePage437AreThoseOfPython) {
  std::string all;
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  EXPECT_EQ(utf8OfCp437(all), support::outputOf(".",
                                                "python3 -c 'import sys; sys.stdout.buffer.write("
                                                "bytes(range(256)).decode(\"cp437\").encode())'"));
}

TEST(Names, OfOtherProgramsAreShownFoundAndKept) {
  const std::string oldName = "gr\x94\xE1.txt";  // in code page 437
  constexpr std::uint16_t kUtf8 = 0x800;
  constexpr std::uint16_t kNone = 0;
  const bool everyName = support::kPlatform.everyName;
  const std::string anyName = everyName ? "größ.txt" : "x";
  struct {
    const char* row;
    std::string local;
    std::string central;
    std::uint16_t flags;
    Bytes extra;
    std::string shown;  // UTF-8; empty if the entry cannot be read
    Bytes localExtra{};
  } const rows[] = {
      {"slashes", "a\\b.txt", "a/b.txt", kNone, {}, "a/b.txt"},
      {"flagged in the directory only", oldName, "größ.txt", kUtf8, {}, "größ.txt"},
      {"one letter", "\x94.txt", "ö.txt", kUtf8, {}, "ö.txt"},
      {"code page 437", oldName, oldName, kNone, {}, "größ.txt"},
      {"flagged wrongly", oldName, oldName, everyName ? kUtf8 : kNone, {}, "größ.txt"},
      {"not flagged", anyName, anyName, kNone, {}, anyName},
      {"extra field", "gr__.txt", "gr__.txt", kNone, unicodePath("gr__.txt", "größ.txt"),
       "größ.txt"},
      {"extra field of a former name", "new.txt", "new.txt", kNone,
       unicodePath("gr__.txt", "größ.txt"), "new.txt"},
      {"extra field of another version", "gr__.txt", "gr__.txt", kNone,
       unicodePath("gr__.txt", "größ.txt", 2), "gr__.txt"},
      {"extra field that is no UTF-8", "gr__.txt", "gr__.txt", kNone,
       unicodePath("gr__.txt", oldName), "gr__.txt"},
      {"no local name", "", "entry", kNone, {}, "entry"},
      {"another name with the extra field", "gr xx.txt", oldName, kNone,
       unicodePath(oldName, "größ.txt"), "größ.txt", unicodePath(oldName, "größ.txt")},
      {"another name with the extra field of a former name", "gr xx.txt", oldName, kNone,
       unicodePath("gr xx.txt", "größ.txt"), "größ.txt", unicodePath("gr xx.txt", "größ.txt")},
      {"another name with that of another file", "gr xx.txt", oldName, kNone,
       unicodePath(oldName, "größ.txt"), "", unicodePath(oldName, "größe.txt")},
      {"another name", "other", "entry", kNone, {}, ""},
      {"another name after one letter", oldName.substr(2, 1) + 'a', "öc", kUtf8, {}, ""},
      {"a longer name", "entry", "entry1", kNone, {}, ""},
  };
  const support::TemporaryFolder folder;
  const std::string path = folder.file("a.zip");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.row);
    EntryRecord local;
    EntryRecord central;
    local.name = row.local;
    local.localExtra = row.localExtra;
    // Longer than what is usually read with a header, but where the next entry may seem to overlap.
    if (!row.local.empty()) local.localExtra.resize(5000);
    central.name = row.central;
    central.flags = row.flags;
    central.centralExtra = row.extra;
    support::writeFile(path, archiveOf(local, central));
    const Reader reader(ZipOpenReader(path.c_str()));
    ZipWriter* const writer = ZipOpenWriter(folder.file("copy.zip").c_str(), ZipModeCreate);
    EXPECT_EQ(ZipCopyEntry(writer, reader.get(), nullptr, nullptr) == 0, !row.shown.empty());
    EXPECT_EQ(ZipCloseWriter(writer, nullptr), 0);
    if (row.shown.empty()) continue;
    EXPECT_EQ(readArchive(path), (Entries{{oem(row.shown), "content"}, {"next", "content"}}));
    EXPECT_EQ(readArchive(folder.file("copy.zip")), (Entries{{oem(row.shown), "content"}}));
    // By a walk, then by the index.
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(ZipLocateEntry(reader.get(), oem(row.shown).c_str(), 0), 0);
      EXPECT_NE(ZipLocateEntry(reader.get(), "gr", 0), 0);
    }
  }
}

// Linux has names that are no text.
TEST(Names, ThatAreNoTextAreTheSameOnDisk) {
  if (!support::kPlatform.everyName) GTEST_SKIP() << "every name is text here";
  const support::TemporaryFolder folder;
  const Entries written{{"gr\xF6\xDF", "x"}};
  writeArchive(folder.file("a.zip"), written);
  EXPECT_EQ(readArchive(folder.file("a.zip")), written);
  EXPECT_EQ(support::run(folder.path(), "unzip -qqo a.zip"), 0);
  const std::filesystem::path file = folder.path() / "gr\xF6\xDF";
  EXPECT_EQ(support::readFile(file.string()), "x");
  EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms{0644});
}

}  // namespace
