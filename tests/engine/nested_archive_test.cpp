// An archive that holds another one as a stored entry, damaged in every bit and cut at every byte.

#include <gtest/gtest.h>

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
    if (name != "doc.txt") copied = ZipCopyEntry(writer, reader.get()) == 0 && copied;
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

TEST(NestedArchive, IsNeverTakenForTheOuterOne) {
  const support::TemporaryFolder folder;
  ASSERT_EQ(support::run(folder.path(), std::string("python3 -c '") + kMaker + "'"), 0);
  const std::string path = folder.file("outer.zip");
  const std::string copy = folder.file("copy.zip");
  std::string whole = support::readFile(path);
  // All values of the end record refer to the zip64 one, which has four more bytes than usual.
  whole.replace(whole.size() - 14, 12, 12, '\xFF');
  whole.insert(whole.size() - 42, 4, '\0');
  support::writeFile(path, whole);
  const Entries entries = readArchive(path);

  // For each byte, a letter: the number of changes of its bits that reading, copying and appending
  // notice, from 'a' for none to 'y' for 24.
  std::string noticed(whole.size(), 'a');
  const auto check = [&](const std::string& bytes) {
    support::writeFile(path, bytes);
    Entries before = readArchive(path);
    const int failures = before == entries ? 0 : 1;
    if (before.erase("<no archive>") == 0) {
      EXPECT_EQ(before.size(), 2U) << before.begin()->first;
    }
    const bool isCopied = copyWithout(path, copy);
    if (isCopied) expectKept(before, copy, false);
    const bool isAppended = append(path);
    if (isAppended) expectKept(before, path, true);
    return failures + (isCopied ? 0 : 1) + (isAppended ? 0 : 1);
  };
  for (std::size_t size = 0; size < whole.size(); ++size) {
    SCOPED_TRACE("cut at " + std::to_string(size));
    check(whole.substr(0, size));
  }
  for (std::size_t bit = 0; bit < 8 * whole.size(); ++bit) {
    SCOPED_TRACE("bit " + std::to_string(bit));
    std::string bytes = whole;
    bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ 1 << bit % 8);
    noticed[bit / 8] = static_cast<char>(noticed[bit / 8] + check(bytes));
  }
  const std::string expected =
      // doc.txt, and the local header of inner.zip
      "iiiiaabaiiaaaaaaaaaaaaaaaaiiiiiiiiiiiaaaaaaaaaaaaaaaaaaaaiiiiiiii"
      "qqqqaacaqqaaaaiiiiiiiiiiiiqqqqqqqqqqqqqiiiiiiiiiiiiiiiiiiii" +
      std::string(121, 'i') +
      // directory
      "yyyyaaaadaiiaaaaiiiiyyyyiiiiyyyyyyaaaaaaaaqqqqqqqqqqqqqqqiiiiiiiilyyyyyyylqqqqqqq"
      "yyyyaaaaeaqqaaaaqqqqyyyyyyyyyyyyyyaaaaaaaayyyyqqqqqqqqqyyyyqqqqqqqqryyyyyyysyyyyyyy"
      // end records
      "yyyyaaaaaaaaaaaayyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyaaaa"
      "yyyyaaaayyyyyyyyaaaayyyyaaaaaayyyyyyyyyyaa";
  EXPECT_EQ(noticed, expected);
}

}  // namespace
