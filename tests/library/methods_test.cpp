// The compression methods: archives of other programs and of this library.

#include "library/zip.h"
#include "support/noise.h"

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

  // Returns text that every method compresses, with repetitions.
  static std::string textOfSize(std::size_t size) {
    std::string text = support::noise(size);
    for (char& c : text) c = "0123456789 \n"[static_cast<unsigned char>(c) % 12];
    // Matches of every length that has a code of its own.
    constexpr std::size_t kLongest = 300;
    for (std::size_t at = 2 * kLongest; at + kLongest < size; at += 2 * kLongest + 1) {
      text.replace(at, at % kLongest, text, at - kLongest, at % kLongest);
    }
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

// Entries of a megabyte and of four gigabytes, and the window that they ask for; and codes.
TEST_F(Methods, WindowsAndCodesHaveALimit) {
  shell("'" VESK_TEST_DATA "/../library/make-window-archives'");

  const std::tuple<const char*, bool, Reason> kRows[] = {
      {"deflate64 16", true, Reason::None},
      {"deflate64 lengths", true, Reason::None},
      {"deflate64 too many lengths", true, Reason::Damaged},
      {"zstd 27", VESK_ZSTD != 0, Reason::None},
      {"zstd 28", VESK_ZSTD != 0, Reason::UnsupportedMethod},
      // Their content is shorter than their records say.
      {"lzma 27", VESK_LZMA != 0, Reason::Damaged},
      {"lzma 28", VESK_LZMA != 0, Reason::UnsupportedMethod},
      {"xz 27", VESK_LZMA != 0, Reason::None},
      {"xz 28", VESK_LZMA != 0, Reason::UnsupportedMethod}};
  for (const auto& [name, isBuilt, reason] : kRows) {
    SCOPED_TRACE(name);
    path_ = folder_.file(std::string(name) + ".zip");
    Bytes bytes;
    EXPECT_EQ(readAll(bytes), isBuilt ? reason : Reason::UnsupportedMethod);
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
