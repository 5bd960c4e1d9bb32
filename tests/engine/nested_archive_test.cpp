// An archive that holds another one as a stored entry, damaged in every bit and cut at every byte.

#include <gtest/gtest.h>

#include <filesystem>
#include <initializer_list>
#include <set>
#include <string>

#include "engine/entries.h"
#include "support/programs.h"
#include "support/temporary_folder.h"

namespace {

using namespace entries;

constexpr const char* kMaker = R"(
import io, zipfile
inner = io.BytesIO()
with zipfile.ZipFile(inner, "w") as z: z.writestr("inner.txt", "inner")
zipfile.ZIP64_LIMIT = zipfile.ZIP_FILECOUNT_LIMIT = -1
with zipfile.ZipFile("outer.zip", "w") as z:
    z.writestr("doc.txt", "document")
    z.writestr("inner.zip", inner.getvalue())
)";

bool append(const std::string& path) {
  ZipWriter* const writer = ZipOpenWriter(path.c_str(), ZipModeAppend);
  const bool isAdded = addEntry(writer, "added", "new");
  return ZipCloseWriter(writer, nullptr) == 0 && isAdded;
}

// Copies all entries but doc.txt, if each of them can be copied.
bool copyWithout(const std::string& path, const std::string& target) {
  const Reader reader(ZipOpenReader(path.c_str()));
  ZipWriter* const writer = ZipOpenWriter(target.c_str(), ZipModeCreate);
  bool copied = reader != nullptr;
  forEachEntry(reader.get(), [&](const std::string& name) {
    if (name != "doc.txt")
      copied = ZipCopyEntry(writer, reader.get(), nullptr, nullptr) == 0 && copied;
  });
  return ZipCloseWriter(writer, nullptr) == 0 && copied;
}

// Checks that entries that could be read are still there, but for doc.txt if it was to be removed.
void expectKept(const Entries& before, const std::string& path, bool withDocument) {
  const Entries after = readArchive(path);
  for (const auto& [name, content] : before) {
    if (content == "<unreadable>" || (name == "doc.txt" && !withDocument)) continue;
    EXPECT_TRUE(after.count(name) != 0 && after.at(name) == content) << name;
  }
}

// What is done with a damaged file, and what comes of it.
struct Outcome {
  bool isRead;  // as the whole file is
  bool isCopied;
  bool isAppended;
};

Outcome use(const std::string& bytes, const std::string& path, const Entries& whole) {
  const std::string copy = path + ".copy";
  // A file system such as ext4 writes a file that was truncated to the disk when it is closed.
  std::filesystem::remove(path);
  std::filesystem::remove(copy);
  support::writeFile(path, bytes);
  Entries before = readArchive(path);
  Outcome outcome{.isRead = before == whole, .isCopied = false, .isAppended = false};
  if (before.erase("<no archive>") == 0) {
    EXPECT_EQ(before.size(), 2U) << before.begin()->first;
  }
  outcome.isCopied = copyWithout(path, copy);
  if (outcome.isCopied) expectKept(before, copy, false);
  outcome.isAppended = append(path);
  if (outcome.isAppended) expectKept(before, path, true);
  return outcome;
}

class NestedArchive : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(support::run(folder_.path(), std::string("python3 -c '") + kMaker + "'"), 0);
    whole_ = support::readFile(path_);
    // All values of the end record refer to the zip64 one, which has four more bytes than usual.
    whole_.replace(whole_.size() - 14, 12, 12, '\xFF');
    whole_.insert(whole_.size() - 42, 4, '\0');
    support::writeFile(path_, whole_);
    entries_ = readArchive(path_);
  }

  support::TemporaryFolder folder_;
  std::string path_ = folder_.file("outer.zip");
  std::string whole_;
  Entries entries_;
};

TEST_F(NestedArchive, IsNeverTakenForTheOuterOneThatIsCut) {
  for (std::size_t size = 0; size < whole_.size(); ++size) {
    SCOPED_TRACE("cut at " + std::to_string(size));
    EXPECT_FALSE(use(whole_.substr(0, size), path_, entries_).isRead);
  }
}

TEST_F(NestedArchive, IsNeverTakenForTheOuterOneThatIsDamaged) {
  const std::size_t inner = whole_.find("PK\3\4", 1);
  const std::size_t innerName = inner + 30;
  const std::size_t innerExtra = innerName + std::string("inner.zip").size();
  const std::size_t lastRecord = whole_.rfind("PK\1\2");
  const std::size_t zip64 = whole_.rfind("PK\6\6");
  const std::size_t locator = whole_.rfind("PK\6\7");
  const std::size_t end = whole_.size() - 22;

  // The bits that reading does not use.
  std::set<std::size_t> unused;
  const auto add = [&](std::size_t position, std::size_t size) {
    for (std::size_t bit = 8 * position; bit < 8 * (position + size); ++bit) unused.insert(bit);
  };
  const auto addFlags = [&](std::size_t position, std::initializer_list<std::size_t> used) {
    add(position, 2);
    for (const std::size_t bit : used) unused.erase(8 * position + bit);
  };
  for (const std::size_t header : {std::size_t{0}, inner}) {
    add(header + 4, 2);         // version
    addFlags(header + 6, {0});  // encryption
    add(header + 10, 16);       // time, CRC and sizes
  }
  add(30 + std::string("doc.txt").size(), 20);  // the zip64 fields
  add(innerExtra, 20);
  for (const std::size_t record : {whole_.rfind("PK\1\2", lastRecord - 1), lastRecord}) {
    add(record + 4, 4);               // versions
    addFlags(record + 8, {0, 5, 6});  // encryption, patches, and strong encryption
    add(record + 12, 4);              // time
    add(record + 34, 8);              // disk and attributes
  }
  add(zip64 + 4, 12);   // size and versions
  add(zip64 + 56, 4);   // the added bytes
  add(locator + 4, 4);  // disks
  add(locator + 16, 4);
  add(end + 4, 6);
  add(end + 20, 2);  // the length of the comment

  for (std::size_t bit = 0; bit < 8 * whole_.size(); ++bit) {
    const std::size_t position = bit / 8;
    SCOPED_TRACE("bit " + std::to_string(bit % 8) + " of byte " + std::to_string(position));
    std::string bytes = whole_;
    bytes[position] = static_cast<char>(bytes[position] ^ 1 << bit % 8);
    const Outcome outcome = use(bytes, path_, entries_);
    const bool isUnused = unused.count(bit) != 0;
    EXPECT_EQ(outcome.isRead, isUnused);
    if (position >= inner && position < innerExtra) {
      // A copy also compares the CRC and the sizes with the directory.
      const bool isCompared = position >= inner + 14 && position < inner + 26;
      EXPECT_EQ(outcome.isCopied, isUnused && !isCompared);
    }
    if (position >= zip64) {
      EXPECT_EQ(outcome.isCopied, isUnused);
      EXPECT_EQ(outcome.isAppended, isUnused);
    }
  }
}

}  // namespace
