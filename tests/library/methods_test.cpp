// The compression methods: archives of other programs and of this library.

#include <filesystem/archive.h>
#include <filesystem/archive_change.h>
#include <filesystem/zip.h>

#include <algorithm>
#include <filesystem>

#include "library/zip.h"
#include "support/noise.h"
#include "support/programs.h"

namespace {

using namespace FileSystem;

class Methods : public Zip {
 protected:
  struct Row {
    std::string name;  // as methodName() returns it
    std::uint16_t number;
    bool isBuilt;
    std::string command;   // packs the file `in` into a.zip
    Options options = {};  // without a command, those of a change that does
  };

  static std::vector<Row> rows() {
    const auto zipfile = [](int method) {
      return "python3 -c 'import zipfile; zipfile.ZipFile(\"a.zip\", \"w\", " +
             std::to_string(method) + ").write(\"in\")'";
    };
    const Options zstd = Options().setMethod(Method::Zstandard);
    const std::string sevenZip = "7z a -tzip a.zip in -mm=";
    return {{"Deflate64", 9, true, sevenZip + "Deflate64"},
            {"Deflate64", 9, true, sevenZip + "Deflate64 -mx=1 -psecret -mem=AES256"},
            {"bzip2", 12, VESK_BZIP2 != 0, zipfile(12)},
            {"bzip2", 12, VESK_BZIP2 != 0, sevenZip + "bzip2 -psecret -mem=AES256"},
            {"LZMA", 14, VESK_LZMA != 0, zipfile(14)},
            {"LZMA", 14, VESK_LZMA != 0, sevenZip + "LZMA:eos=off"},
            {"XZ", 95, VESK_LZMA != 0, sevenZip + "xz"},
            {"XZ", 95, VESK_LZMA != 0, sevenZip + "xz -psecret -mem=ZipCrypto"},
            {"Zstandard", 93, VESK_ZSTD != 0, "", zstd},
            {"Zstandard", 93, VESK_ZSTD != 0, "", Options(zstd).setLevel(1)},
            {"Zstandard", 93, VESK_ZSTD != 0, "", Options(zstd).setLevel(9)},
            {"Zstandard", 93, VESK_ZSTD != 0, "",
             Options(zstd).setPassword("secret").setEncryption(Encryption::Aes256)},
            {"Zstandard", 93, VESK_ZSTD != 0, "", Options(zstd).setPassword("secret")}};
  }

  void packWith(const Row& row, const std::string& content) {
    std::filesystem::remove(path_);
    support::writeFile(in_, content);
    if (!row.command.empty()) {
      shell(row.command);
      return;
    }
    ArchiveChange change;
    change.insertFile(in_, "in");
    ASSERT_TRUE(change.apply(path_.c_str(), row.options));
    shell("7z t -psecret a.zip");
    if (row.options.password().empty()) shell("bsdtar -xOf a.zip in | cmp - in");
  }

  Reason readAll(Bytes& bytes) const {
    const Archive archive = openArchive();
    return archive.readAll(archive.entries().at(0), bytes, secret_);
  }

  static std::string textOfSize(std::size_t size) {
    std::string text = support::noise(size);
    for (char& c : text) c = "0123456789 \n"[static_cast<unsigned char>(c) % 12];
    return text;
  }

  const Options secret_ = Options().setPassword("secret");
};

TEST_F(Methods, ContentsAreReadWholeAndInPieces) {
  const std::string longest = textOfSize(5 << 20);
  for (const Row& row : rows()) {
    // Longer than a part in which this library writes content, or than a block of input.
    const std::string large = row.command.empty() ? longest : longest.substr(0, 1 << 20);
    for (const std::string& content :
         {std::string(), std::string("x"), large.substr(0, 30000), large}) {
      SCOPED_TRACE(row.name + ' ' + row.command + ' ' + std::to_string(content.size()));
      if (row.command.empty() && !row.isBuilt) continue;
      packWith(row, content);
      const Archive archive = openArchive();
      const Entry entry = archive.entries().at(0);
      // What does not shrink is stored by most programs.
      if (content.size() < 100 && entry.method == 0) continue;
      EXPECT_EQ(entry.method, row.number);
      EXPECT_EQ(methodName(entry.method), row.name);
      EXPECT_EQ(canReadMethod(entry.method), row.isBuilt);
      const Reason expected = row.isBuilt ? Reason::None : Reason::UnsupportedMethod;
      std::string pieces;
      EXPECT_EQ(archive.read(
                    entry,
                    [&](const unsigned char* data, std::size_t size) {
                      pieces.append(data, data + size);
                      return true;
                    },
                    secret_),
                expected);
      EXPECT_EQ(archive.test({entry}, secret_).items.at(0).reason, expected);
      Bytes bytes;
      EXPECT_EQ(archive.readAll(entry, bytes, secret_), expected);
      EXPECT_EQ(archive.extract(entry, out_.c_str(), secret_), expected);
      if (!row.isBuilt) continue;
      EXPECT_TRUE(pieces == content);
      EXPECT_TRUE(bytes == bytesOf(content));
      EXPECT_TRUE(support::readFile(out_) == content);
      EXPECT_TRUE(content.empty() || contentOf("in", "secret") == content);
    }
  }
}

// Entries of a megabyte and of four gigabytes, and the window that they ask for.
TEST_F(Methods, WindowsHaveALimit) {
  python(R"(
import lzma, zlib
def make(kind, bits):
    plain = b"x" * 10
    size = 4294967294
    if kind == "zstd":
        method, stored = 93, b"\x28\xb5\x2f\xfd\0" + bytes([bits - 10 << 3]) + struct.pack("<I", 10 << 3 | 1)[:3] + plain
    elif kind == "deflate64":
        # A block with fixed codes: a literal, the longest match at distance 1, and the end.
        plain = b"x" * 65539
        code = "1" + "10" + "10101000" + "11000101" + "1" * 16 + "00000" + "0000000"
        method, stored = 9, int(code[::-1], 2).to_bytes(6, "little")
    elif kind == "lzma":
        data = lzma.compress(plain, lzma.FORMAT_ALONE)
        method, stored = 14, b"\x09\x14\5\0" + data[:1] + struct.pack("<I", 1 << bits) + data[13:]
    else:
        data = bytearray(lzma.compress(plain, lzma.FORMAT_XZ))
        end = 12 + (data[12] + 1) * 4 - 4
        at = data.index(b"\x21\x01") + 2
        data[at] = (bits - 12) * 2
        data[end:end + 4] = struct.pack("<I", zlib.crc32(data[12:end]))
        method, stored = 95, bytes(data)
    if kind != "lzma":
        size = len(plain)
    head = struct.pack("<IHHHHHIIIHH", 0x04034B50, 63, 2, method, 0, 0x21, zlib.crc32(plain), len(stored), size, 2, 0) + b"in"
    record = struct.pack("<IHHHHHHIIIHHHHHII", 0x02014B50, 63, 63, 2, method, 0, 0x21, zlib.crc32(plain),
                         len(stored), size, 2, 0, 0, 0, 0, 0, 0) + b"in"
    end = struct.pack("<IHHHHIIH", 0x06054B50, 0, 0, 1, 1, len(record), len(head) + len(stored), 0)
    open(f"{kind}{bits}.zip", "wb").write(head + stored + record + end)
make("deflate64", 16)
for kind in "zstd", "lzma", "xz":
    for bits in 27, 28: make(kind, bits))");
  const struct {
    const char* kind;
    int bits;
    bool isBuilt;
    Reason reason;
  } kRows[] = {{"deflate64", 16, true, Reason::None},
               {"zstd", 27, VESK_ZSTD != 0, Reason::None},
               {"zstd", 28, VESK_ZSTD != 0, Reason::UnsupportedMethod},
               // Their content is shorter than their records say.
               {"lzma", 27, VESK_LZMA != 0, Reason::Damaged},
               {"lzma", 28, VESK_LZMA != 0, Reason::UnsupportedMethod},
               {"xz", 27, VESK_LZMA != 0, Reason::None},
               {"xz", 28, VESK_LZMA != 0, Reason::UnsupportedMethod}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(std::string(row.kind) + ' ' + std::to_string(row.bits));
    path_ = folder_.file(row.kind + std::to_string(row.bits) + ".zip");
    Bytes bytes;
    EXPECT_EQ(readAll(bytes), row.isBuilt ? row.reason : Reason::UnsupportedMethod);
  }
}

// A build without the method changes nothing, nor does a value that is no method.
TEST_F(Methods, WritingFailsWithoutTheMethod) {
  std::vector<Method> missing = {static_cast<Method>(7)};
  if (VESK_ZSTD == 0) missing.push_back(Method::Zstandard);
  make({"old"});
  const std::string before = support::readFile(path_);
  for (const Method method : missing) {
    const Options options = Options().setMethod(method);
    ArchiveChange change;
    change.insertBytes(bytesOf("x"), "x");
    EXPECT_EQ(change.apply(path_.c_str(), options).reason, Reason::UnsupportedMethod);
    std::filesystem::create_directories(in_);
    EXPECT_EQ(packFolder(in_.c_str(), path_.c_str(), options).reason, Reason::UnsupportedMethod);
    EXPECT_TRUE(support::readFile(path_) == before);
  }
}

}  // namespace
