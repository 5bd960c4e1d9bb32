// Entries encrypted with AES, by other programs and by the engine.

#include "zip/engine/cipher/aes.h"

#include "engine/entries.h"
#include "zip/engine/container/entry_record.h"

namespace {

using namespace entries;

class Aes : public ArchiveTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(zip_engine::hasAes(), VESK_AES != 0);
    if (VESK_AES == 0) GTEST_SKIP() << "built without AES";
  }
};

TEST_F(Aes, ArchivesAreThoseOfOtherPrograms) {
  const Entries theirs{{"in/text", repetitiveText(5000)},
                       {"in/random", noise(3000, 3)},
                       {"in/empty", ""},
                       {"in/large", repetitiveText(9 << 20)},
                       {"in/large random", noise(5 << 20, 4)}};
  for (const auto& [name, content] : theirs) write(name, content);
  const std::string bsdtar = "bsdtar --format zip --passphrase secret --options zip:encryption=";
  for (const std::string& command :
       {std::string("7z a -tzip -psecret -mem=AES256 a.zip in"),
        std::string("7z a -tzip -psecret -mem=AES192 a.zip in"), bsdtar + "aes256 -cf a.zip in",
        bsdtar + "aes128 -cf a.zip in", std::string("7z t -psecret a.zip")}) {
    SCOPED_TRACE(command);
    std::filesystem::remove(path_);
    // The last command reads what the engine writes.
    if (command.starts_with("7z t")) {
      writeArchive(path_, theirs, ZipModeCreate, "secret", ZipEncryptAes256);
    }
    shell(command);
    for (const std::uint32_t step : {1000U, 1U << 20, 1U << 26}) {
      EXPECT_TRUE(readArchive(path_, step) == theirs);
    }
    const std::string copy = folder_.file("copy.zip");
    copyArchive(path_, copy, "");
    EXPECT_TRUE(readArchive(copy) == theirs);
    shell("7z t -psecret copy.zip");

    const Reader reader(ZipOpenReader(path_.c_str()));
    for (int s = ZipFirstEntry(reader.get()); s == 0; s = ZipNextEntry(reader.get())) {
      std::string content;
      EXPECT_FALSE(readCurrent(reader.get(), content, 1 << 20, "wrong") && !content.empty());
      EXPECT_FALSE(readCurrent(reader.get(), content, 1 << 20, nullptr) && !content.empty());
    }
  }
}

// The extra field is known with these numbers of values of each of its bytes.
TEST_F(Aes, UnknownExtraFieldsAreRefused) {
  zip_engine::EntryRecord record;
  zip_engine::appendAesExtra(record.centralExtra, {.keySize = 32, .method = ZipMethodDeflate});
  std::string counts;
  for (unsigned char& byte : record.centralExtra) {
    int known = 0;
    for (int change = 0; change < 256; ++change, ++byte) {
      zip_engine::CentralDirectory directory;
      appendCentralRecord(directory.blob, record, 0);
      if (aesParameters(recordAt(directory, 0))) ++known;
    }
    counts += std::to_string(known) + ' ';
  }
  int methods = 0;
  for (std::uint32_t number = 0; number < 256; ++number) methods += ZipCanRead(number);
  EXPECT_EQ(counts, "1 1 1 1 2 1 256 256 3 " + std::to_string(methods) + " 1 ");
}

// What deflate makes of no content is authenticated, although it is not decoded.
TEST_F(Aes, StreamsOfNoContentAreRead) {
  constexpr char kStream[] = "\3\0";
  write("e", {kStream, 2});
  shell("7z a -tzip -psecret -mem=AES256 -mx0 a.zip e");
  std::string bytes = support::readFile(path_);
  const std::size_t record = bytes.find("PK\1\2");
  for (const std::size_t size : {std::size_t{22}, record + 24}) bytes[size] = 0;
  for (const std::size_t start : {std::size_t{0}, record}) {
    bytes[bytes.find("AE\3", start) + 3] = ZipMethodDeflate;
  }
  support::writeFile(path_, bytes);
  shell("7z t -psecret a.zip");
  EXPECT_EQ(readArchive(path_), (Entries{{"e", ""}}));
  --bytes[record - 1];
  support::writeFile(path_, bytes);
  EXPECT_EQ(readArchive(path_), (Entries{{"e", "<unreadable>"}}));
}

// The authentication code takes the place of the CRC, or has it beside it.
TEST_F(Aes, DamageIsNoticed) {
  const auto check = [&](const std::string& bytes) {
    support::writeFile(path_, bytes);
    EXPECT_EQ(readArchive(path_), (Entries{{"e", "<unreadable>"}}));
  };
  write("e", "content");
  shell("7z a -tzip -psecret -mem=AES256 -mx0 a.zip e");
  writeArchive(folder_.file("ours.zip"), {{"e", "content"}}, ZipModeCreate, "secret",
               ZipEncryptAes256);
  for (const char* const name : {"a.zip", "ours.zip"}) {
    const std::string whole = read(name);
    const std::size_t record = whole.find("PK\1\2");
    EXPECT_EQ(whole[record + 6], 51) << "version needed";
    EXPECT_EQ(whole.substr(record + 16, 4), std::string(4, '\0')) << "CRC";
    const std::size_t start = record - 7 - zip_engine::kAesCodeSize - 18;
    for (std::size_t at = start; at < start + 35; ++at) {
      SCOPED_TRACE(name + std::to_string(at));
      std::string bytes = whole;
      bytes[at] ^= 1;
      check(bytes);
    }
  }
  write("e", "content of more than 20 bytes");
  shell(
      "bsdtar --format zip --passphrase secret --options zip:encryption=aes256"
      " -cf a.zip e");
  std::string bytes = support::readFile(path_);
  bytes[bytes.find("PK\1\2") + 16] ^= 1;
  check(bytes);
}

}  // namespace
