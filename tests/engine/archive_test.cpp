// The zip engine against itself, against other programs, and against damage.

#include "engine/entries.h"
#include "platform/code_page.h"
#include "zip/engine/codec/codec.h"
#include "zip/engine/container/entry_record.h"

namespace {

using namespace entries;

// A name outside ASCII, in the code page of archives.
std::string strangeName() {
  const char* const name = support::kPlatform.everyName ? "größe 日本 😀" : "größe";
  return platform::convertCodePage(name, CP_UTF8, CP_OEMCP);
}

using Archive = ArchiveTest;

const Entries& sample() {
  static const Entries entries{{"empty", ""},
                               {"one", "1"},
                               {"folder\\text.txt", repetitiveText(100000)},
                               {"random", noise(70000, 1)},
                               {strangeName(), "names"},
                               {"large.txt", repetitiveText(9 << 20)},
                               {"large.bin", noise(6 << 20, 2)},
                               // The last byte of the stream makes plain bytes of two steps.
                               {"zeros", std::string((5 << 20) + 100, '\0')}};
  return entries;
}

// Begins an entry with extra fields and a comment of some lengths.
int begin(ZipWriter* writer, const char* name, int method, int raw = 0, int level = ZipLevelDefault,
          const char* password = nullptr, std::uint32_t local = 0, std::uint32_t central = 0,
          std::uint32_t comment = 0) {
  const std::string fields(0x10000, '\0');
  return ZipOpenNewEntry(writer, name, nullptr, fields.data(), local, fields.data(), central,
                         std::string(comment, 'c').c_str(), method, level, raw, -15, 8, 0, password,
                         0);
}

TEST_F(Archive, IsReadByThisAndOtherPrograms) {
  for (const char* password : {static_cast<const char*>(nullptr), "secret"}) {
    SCOPED_TRACE(password == nullptr ? "plain" : password);
    Entries entries = sample();
    // One of the programs takes seconds to decrypt it.
    if (password != nullptr) entries.erase("large.bin");
    writeArchive(path_, entries, ZipModeCreate, password);
    for (const std::uint32_t step : {1024U, 1U << 20, 1U << 26}) {
      EXPECT_EQ(readArchive(path_, step), entries);
    }
    for (const std::string checker : support::kCheckers) {
      // unzip calls names with backslashes a warning, status 1.
      EXPECT_LE(support::run(folder_.path(), checker + "a.zip"), 1) << checker;
    }
    const std::string copy = folder_.file("copy.zip");
    copyArchive(path_, copy, "");
    EXPECT_TRUE(support::readFile(copy) == support::readFile(path_));
    // Values that no reader of ours needs, and the number of entries that became much smaller.
    const std::string flagsAndVersion = password == nullptr ? "0 10" : "1 20";
    EXPECT_EQ(
        output(
            "python3 -c 'import zipfile; z = zipfile.ZipFile(\"a.zip\"); i = z.getinfo(\"one\");"
            " print(i.flag_bits, i.extract_version, i.create_system, i.create_version, i.date_time,"
            " i.comment, i.extra, i.internal_attr, i.external_attr, z.getinfo(\"empty\").CRC,"
            " sum(e.compress_size < e.file_size / 4 for e in z.infolist()),"
            " sum(e.flag_bits & 0x800 for e in z.infolist()))'"),
        flagsAndVersion +
            " 11 20 (2021, 7, 5, 4, 3, 2) b'note' b'4\\x12\\x01\\x00C' 1 33 0 3 2048\n");
  }
}

TEST_F(Archive, AppendsToArchivesOfOtherPrograms) {
  const Entries theirs{
      {"in/deep/file.txt", repetitiveText(5000)}, {"in/random", noise(3000, 3)}, {"in/empty", ""}};
  for (const auto& [name, content] : theirs) write(name, content);
  write("stream.py", R"(
import sys, zipfile
with zipfile.ZipFile(sys.stdout.buffer, "w", 8) as z:
    for name in "in/deep/file.txt", "in/random", "in/empty":
        with z.open(name, "w", force_zip64=True) as entry: entry.write(open(name, "rb").read())
)");
  struct {
    const char* name;
    const char* command;
    bool copiesExactly = false;
    const char* comment = "";
  } const programs[] = {
      {"zip", "zip -qr a.zip in", true},
      {"zip stored", "zip -qr0 a.zip in", true},
      {"zip with a password", "zip -qr -P secret a.zip in"},
      {"zip with a password to a pipe", "zip -qr -P secret - in | cat >a.zip"},
      {"zip with a comment", "echo words | zip -qrz a.zip in", true, "words"},
      {"zip with a cut comment", "echo words | zip -qrz a.zip in; truncate -s -2 a.zip", false,
       "wor"},
      {"zip with zip64 fields", "zip -qr -fz a.zip in"},
      {"zip with descriptors", "zip -qr -fd a.zip in"},
      {"7z", "7z a -tzip a.zip in", true},
      {"7z with a password", "7z a -tzip -psecret -mem=ZipCrypto a.zip in", true},
      {"bsdtar to a pipe", "bsdtar --format zip -cf - in | cat >a.zip"},
      {"zipfile",
       "python3 -c 'import zipfile; z = zipfile.ZipFile(\"a.zip\", \"w\", 8); z.comment = "
       "b\"PK\\5\\6\";"
       " [z.write(n) for n in (\"in/deep/file.txt\", \"in/random\", \"in/empty\")]; z.close()'",
       true, "PK\5\6"},
      {"zipfile with zip64 fields to a pipe", "python3 stream.py | cat >a.zip"},
      {"prefix", "zip -qr b.zip in && cat in/random b.zip >a.zip && rm b.zip"},
      {"prefix with mended offsets",
       "zip -qr b.zip in && cat in/random b.zip >a.zip && zip -qA a.zip; rm b.zip"},
      {"bytes after the end", "zip -qr a.zip in && echo more >>a.zip"},
      {"many zeros after the end", "zip -qr a.zip in && head -c 2000000 /dev/zero >>a.zip"},
  };
  for (const auto& program : programs) {
    SCOPED_TRACE(program.name);
    std::filesystem::remove(path_);
    shell(program.command);
    EXPECT_EQ(readArchive(path_), theirs);
    const std::string comment = program.comment;
    EXPECT_EQ(globalComment(Reader(ZipOpenReader(path_.c_str())).get()), comment);
    const std::string copy = folder_.file("copy.zip");
    if (program.copiesExactly) {
      copyArchive(path_, copy, comment);
      EXPECT_TRUE(support::readFile(copy) == support::readFile(path_));
    }
    const Entries ours{{"added", "new"}};
    const auto size = std::filesystem::file_size(path_);
    writeArchive(path_, ours, ZipModeAppend);
    // The old directory is overwritten, unless many bytes follow it.
    EXPECT_EQ(std::filesystem::file_size(path_) > size + 150, size > 2'000'000);
    Entries all = theirs;
    all.insert(ours.begin(), ours.end());
    EXPECT_EQ(readArchive(path_), all);
    // unzip warns of a prefix and of bytes after the end with status 1.
    EXPECT_LE(support::run(folder_.path(), "unzip -P secret -tqq a.zip"), 1);

    EXPECT_EQ(globalComment(Reader(ZipOpenReader(path_.c_str())).get()), comment);
    copyArchive(path_, copy, "copied");
    EXPECT_EQ(readArchive(copy), all);
    // No copy has a zip64 block with two sizes. An entry has a descriptor if it is flagged, and
    // then no sums in its local header.
    const std::string bytes = support::readFile(copy);
    EXPECT_EQ(bytes.find(std::string("\1\0\20\0", 4)), std::string::npos);
    for (std::size_t at = 0; (at = bytes.find("PK\1\2", at)) != std::string::npos; ++at) {
      const std::string sums = bytes.substr(at + 16, 12);
      const bool flagged = (bytes[at + 8] & 8) != 0;
      EXPECT_EQ(bytes.find("PK\7\b" + sums) != std::string::npos, flagged) << at;
      const auto* const offset = reinterpret_cast<const unsigned char*>(&bytes[at + 42]);
      EXPECT_EQ(bytes.substr(zip_engine::load32(offset) + 14, 12),
                flagged ? std::string(12, '\0') : sums);
    }
    for (const std::string checker : support::kCheckers) {
      shell(checker + "copy.zip");
    }
  }
}

// The plain format counts to 65,534. Zip64 has a record for more.
TEST_F(Archive, HoldsMoreEntriesThanThePlainFormatCounts) {
  for (const std::uint32_t count : {65535U, 65536U, 70000U}) {
    SCOPED_TRACE(count);
    ZipWriter* writer = ZipOpenWriter(path_.c_str(), ZipModeCreate);
    for (std::uint32_t i = 1; i < count; ++i) {
      ASSERT_TRUE(addEntry(writer, std::to_string(i), "x"));
    }
    ASSERT_EQ(ZipCloseWriter(writer, nullptr), 0);
    writeArchive(path_, {{"last", "y"}}, ZipModeAppend);
    const auto countOf = [&] {
      const Reader reader(ZipOpenReader(path_.c_str()));
      ZipGlobalInfo info{};
      EXPECT_EQ(ZipReadGlobalInfo(reader.get(), &info), 0);
      std::string content;
      for (const std::string& name :
           {std::string("1"), std::to_string(count - 1), std::string("last")}) {
        EXPECT_EQ(ZipLocateEntry(reader.get(), name.c_str(), 0), 0) << name;
        EXPECT_TRUE(readCurrent(reader.get(), content, 10));
        EXPECT_TRUE(readAlone(path_, name, content, 10)) << name;
      }
      EXPECT_NE(ZipLocateEntry(reader.get(), std::to_string(count).c_str(), 0), 0);
      EXPECT_EQ(ZipOpenReaderAt(path_.c_str(), std::to_string(count).c_str()), nullptr);
      return info.entryCount;
    };
    EXPECT_EQ(countOf(), count);
    for (const char* const checker : {"unzip -tqq a.zip", "7z t a.zip"}) {
      shell(checker);
    }

    // Without the zip64 records, and with the count modulo 65,536, as old programs write it.
    std::string bytes = support::readFile(path_);
    const std::string sizeAndOffset =
        bytes.substr(bytes.size() - 58, 4) + bytes.substr(bytes.size() - 50, 4);
    const std::string modulo = {static_cast<char>(count), static_cast<char>(count >> 8)};
    bytes.resize(bytes.size() - 98);
    bytes +=
        std::string("PK\5\6\0\0\0\0", 8) + modulo + modulo + sizeAndOffset + std::string(2, '\0');
    support::writeFile(path_, bytes);
    EXPECT_EQ(countOf(), count);
    writeArchive(path_, {{"more", "z"}}, ZipModeAppend);
    EXPECT_EQ(countOf(), count + 1U);
  }
}

// What two contents have in common would otherwise show.
TEST_F(Archive, EachEntryHasKeysOfItsOwn) {
  for (const int encryption : {ZipEncryptTraditional, ZipEncryptAes256}) {
    if (encryption == ZipEncryptAes256 && VESK_AES == 0) continue;
    writeArchive(path_, {{"e", "content"}}, ZipModeCreate, "secret", encryption);
    const std::string first = support::readFile(path_);
    writeArchive(path_, {{"e", "content"}}, ZipModeCreate, "secret", encryption);
    EXPECT_NE(support::readFile(path_), first) << encryption;
  }
}

TEST_F(Archive, WrongPasswordGivesNothing) {
  writeArchive(path_, {{"e", repetitiveText(5000)}}, ZipModeCreate, "secret");
  const Reader reader(ZipOpenReader(path_.c_str()));
  for (int i = 0; i < 600; ++i) {
    // One of 256 passes the check byte; the CRC has to catch it.
    ASSERT_EQ(ZipFirstEntry(reader.get()), 0);
    std::string content;
    EXPECT_FALSE(readCurrent(reader.get(), content, 1 << 16, std::to_string(i).c_str()));
  }
  EXPECT_NE(ZipOpenEntry(reader.get(), nullptr, nullptr, 0, nullptr), 0);
}

// Truncates a small archive at every byte and changes each of its bytes. No content is read that
// was not written.
TEST_F(Archive, DamageNeverGivesWrongBytes) {
  const Entries entries{{"a.txt", repetitiveText(300)}, {"b", noise(40, 5)}, {"c", ""}};
  for (const char* password : {static_cast<const char*>(nullptr), "secret"}) {
    writeArchive(path_, entries, ZipModeCreate, password);
    const std::string whole = support::readFile(path_);
    const auto check = [&](const std::string& bytes) {
      // Quicker than to truncate it.
      std::filesystem::remove(path_);
      support::writeFile(path_, bytes);
      for (const std::uint32_t step : {7U, 4096U}) {
        const Entries read = readArchive(path_, step);
        for (const auto& [name, content] : read) {
          const auto known = entries.find(name);
          if (content == "<unreadable>" || known == entries.end()) continue;
          EXPECT_EQ(content, known->second);
        }
        for (const auto& [name, content] : entries) {
          std::string alone;
          const bool isRead = readAlone(path_, name, alone, step);
          EXPECT_TRUE(!isRead || read.count(name) != 0) << name;
        }
      }
    };
    for (std::size_t size = 0; size < whole.size(); ++size) check(whole.substr(0, size));
    for (std::size_t at = 0; at < whole.size(); ++at) {
      for (const int change : {0x01, 0x80, 0xFF}) {
        std::string bytes = whole;
        bytes[at] = static_cast<char>(bytes[at] ^ change);
        check(bytes);
      }
    }
    // Both numbers of entries.
    std::string bytes = whole;
    bytes[bytes.size() - 14] = bytes[bytes.size() - 12] = 4;
    check(bytes);
  }
}

TEST_F(Archive, DroppedEntriesLeaveNoTrace) {
  const std::string wanted = folder_.file("wanted.zip");
  writeArchive(wanted, {{"kept", "k"}});
  std::filesystem::copy(wanted, path_);
  const std::string text = repetitiveText(50000);
  writeArchive(wanted, {{"added", text}}, ZipModeAppend);
  ZipWriter* writer = ZipOpenWriter(path_.c_str(), ZipModeAppend);
  EXPECT_EQ(ZipOpenReader(path_.c_str()), nullptr);
  ASSERT_TRUE(addEntry(writer, "cancelled", noise(9 << 20, 8)));
  EXPECT_EQ(ZipCancelNewEntry(writer), 0);
  EXPECT_NE(ZipCancelNewEntry(writer), 0);
  // The default level is 6.
  ASSERT_TRUE(addEntry(writer, "added", text, nullptr, 6));
  // A copy that fails in the middle.
  const std::string cut = folder_.file("cut.zip");
  writeArchive(cut, {{"cut", noise(100000, 9)}});
  const Reader reader(ZipOpenReader(cut.c_str()));
  std::filesystem::resize_file(cut, 80000);
  EXPECT_EQ(ZipCopyEntry(writer, reader.get(), nullptr, nullptr), ZipStatusDamagedSource);
  // The next entry drops an open one, and so does the end.
  for (const int raw : {1, 0, 1, 1}) {
    ASSERT_EQ(begin(writer, "dropped", ZipMethodDeflate, raw, -1, "secret"), 0);
    EXPECT_EQ(ZipWriteEntry(writer, "data", 4), 0);
    // With a password the CRC that is passed must be the true one.
    EXPECT_FALSE(raw == 0 && ZipCloseNewEntry(writer) == 0);
  }
  EXPECT_EQ(ZipCloseWriter(writer, nullptr), 0);
  EXPECT_TRUE(support::readFile(path_) == support::readFile(wanted));
}

// Python's table also has 7, which was never used.
TEST_F(Archive, MethodsHaveTheirNames) {
  std::string names;
  for (std::uint32_t n = 0; n < 99; ++n) names += std::string(ZipMethodName(n)) + '\n';
  write("names", names);
  shell(
      "python3 -c 'import zipfile; ours = open(\"names\").read().lower().splitlines();"
      " wrong = [n for n, name in zipfile.compressor_names.items() if name not in ours[n]];"
      " assert wrong == [7], wrong'");
}

// Callers report progress between two parts.
TEST_F(Archive, SlowLevelsDeflateSmallerParts) {
  const std::string content = repetitiveText(8 << 20);
  const std::tuple<int, bool, std::uint32_t> kRows[] = {
      {6, true, 2}, {ZipLevelDefault, true, 4}, {ZipLevelDefault, false, 4}, {9, true, 8}};
  for (const auto& [level, isSizeKnown, expected] : kRows) {
    std::uint32_t parts = 0;
    const auto run = [](std::uint32_t count, void (*)(std::uint32_t, const void*), const void*,
                        void* context) {
      *static_cast<std::uint32_t*>(context) = count;
      return true;
    };
    ZipWriter* const writer = ZipOpenWriter(path_.c_str(), ZipModeCreate);
    ZipSetWorkers(writer, 16, run, &parts);
    EXPECT_FALSE(addEntry(writer, "no level", content, nullptr, 10));
    ASSERT_TRUE(addEntry(writer, "e", content, nullptr, level, isSizeKnown));
    ASSERT_EQ(ZipCloseWriter(writer, nullptr), 0);
    EXPECT_EQ(parts, expected) << level;
    EXPECT_TRUE(readArchive(path_) == (Entries{{"e", content}}));
  }
}

// A reader would take an end record in the comment for that of the archive.
TEST_F(Archive, CommentsHoldNoEndRecord) {
  writeArchive(path_, {});
  const std::string end = "cPK\5\6" + std::string(18, 'c');
  for (const auto& comment :
       {std::string(65535, 'c'), std::string(65536, 'c'), end, end.substr(0, 22)}) {
    ZipWriter* const writer = ZipOpenWriter(path_.c_str(), ZipModeAppendFirst);
    const bool isTaken = comment.size() != 65536 && comment != end;
    EXPECT_EQ(ZipCloseWriter(writer, comment.c_str()) == 0, isTaken);
    EXPECT_EQ(std::filesystem::file_size(path_), 22U + (comment.size() == 22 ? 22U : 65535U));
    EXPECT_EQ(ZipUnusedBytes(Reader(ZipOpenReader(path_.c_str())).get()), 0U);
  }
}

// The longest fields are written and copied, and one byte more in any of them is refused.
TEST_F(Archive, FieldsHaveTheirLimits) {
  ZipWriter* const writer = ZipOpenWriter(path_.c_str(), ZipModeCreate);
  for (const int encryption : {ZipEncryptAes256, ZipEncryptTraditional}) {
    const bool isAes = ZipSetEncryption(writer, encryption) == 0 && encryption != 0;
    const std::uint32_t most = isAes ? 65535 - 11 : 65535;
    EXPECT_LT(begin(writer, "n", 0, 0, 9, "secret", most + 1, 0, 0), 0);
    EXPECT_LT(begin(writer, "n", 0, 0, 9, "secret", 0, most - 12 + 1, 0), 0);
    EXPECT_LT(begin(writer, "n", 0, 0, 9, "secret", 0, 0, 65536), 0);
    EXPECT_EQ(begin(writer, "n", 0, 0, 9, "secret", most, most - 12, 65535), 0);
    EXPECT_EQ(ZipCloseNewEntry(writer), 0);
  }
  // Raw entries, which a password only flags.
  EXPECT_EQ(begin(writer, "raw", 0, 1), 0);
  EXPECT_EQ(ZipWriteEntry(writer, "x", 1), 0);
  EXPECT_EQ(ZipCloseRawEntry(writer, 1, ZipCrc32(0, "x", 1)), 0);
  EXPECT_EQ(begin(writer, "flagged", 0, 1, -1, "secret"), 0);
  EXPECT_EQ(ZipCloseRawEntry(writer, 0, 0), 0);
  EXPECT_EQ(ZipCloseWriter(writer, nullptr), 0);
  EXPECT_EQ(readArchive(path_), (Entries{{"n", ""}, {"raw", "x"}, {"flagged", "<unreadable>"}}));
  copyArchive(path_, folder_.file("copy.zip"), "");
  EXPECT_TRUE(read("copy.zip") == support::readFile(path_));
}

}  // namespace
