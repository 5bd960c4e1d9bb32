// An archive that holds another one as a stored entry, damaged in every bit and cut at every byte.

#include "engine/entries.h"
#include "support/sanitized.h"

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

// Reads, copies and appends to a damaged file. Returns what was read.
Entries useDamaged(const std::string& bytes, const std::string& path) {
  const std::string copy = path + ".copy";
  // A file system such as ext4 writes a file that was truncated to the disk when it is closed.
  std::filesystem::remove(path);
  std::filesystem::remove(copy);
  support::writeFile(path, bytes);
  Entries before = readArchive(path);
  Entries read = before;
  if (before.erase("<no archive>") == 0) {
    EXPECT_EQ(before.size(), 2U) << before.begin()->first;
  }
  if (copyWithout(path, copy)) expectKept(before, copy, false);
  if (append(path)) expectKept(before, path, true);
  return read;
}

class NestedArchive : public support::FolderTest {
 protected:
  void SetUp() override {
    shell(std::string("python3 -c '") + kMaker + "'");
    whole_ = support::readFile(path_);
    // All values of the end record refer to the zip64 one, which has four more bytes than usual.
    whole_.replace(whole_.size() - 14, 12, 12, '\xFF');
    whole_.insert(whole_.size() - 42, 4, '\0');
    support::writeFile(path_, whole_);
  }

  std::string path_ = folder_.file("outer.zip");
  std::string whole_;
};

TEST_F(NestedArchive, IsNeverTakenForTheOuterOneThatIsCut) {
  const Entries whole = readArchive(path_);
  for (std::size_t size = 0; size < whole_.size(); ++size) {
    SCOPED_TRACE("cut at " + std::to_string(size));
    EXPECT_NE(useDamaged(whole_.substr(0, size), path_), whole);
  }
}

TEST_F(NestedArchive, IsNeverTakenForTheOuterOneThatIsDamaged) {
  const Entries whole = readArchive(path_);
  const std::size_t inner = whole_.find("PK\3\4", 1);
  const std::size_t zip64 = whole_.rfind("PK\6\6");
  constexpr std::size_t kStep = support::kFewSteps ? 5 : 1;
  for (std::size_t bit = 0; bit < 8 * whole_.size(); bit += kStep) {
    const std::size_t position = bit / 8;
    SCOPED_TRACE("bit " + std::to_string(bit % 8) + " of byte " + std::to_string(position));
    std::string bytes = whole_;
    bytes[position] = static_cast<char>(bytes[position] ^ 1 << bit % 8);
    const Entries read = useDamaged(bytes, path_);
    // Encryption and method in a local header, and disks and counts of the zip64 record.
    const bool isUsed = bit == 8 * (inner + 6) ||
                        (position >= inner + 8 && position < inner + 10) ||
                        (position >= zip64 + 16 && position < zip64 + 40);
    if (isUsed) {
      EXPECT_NE(read, whole);
    }
  }
}

}  // namespace
