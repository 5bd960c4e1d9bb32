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
with zipfile.ZipFile("outer.zip", "w") as z:
    z.writestr("doc.txt", "document")
    z.writestr("inner.zip", inner.getvalue())
)";

// Reads groups of an archive, the archive after an append and the archive after a removal of
// doc.txt. Checks that no readable entry is lost. An operation that failed left an empty one.
constexpr const char* kChecker = R"(
import io, struct, sys, zipfile, zlib
def entries(data):
    found = {}
    try:
        with zipfile.ZipFile(io.BytesIO(data)) as z:
            for info in z.infolist():
                # As programs do that go by the local header.
                crc, size, _, name, extra = struct.unpack_from("<IIIHH", data, info.header_offset + 14)
                start = info.header_offset + 30 + name + extra
                stored = data[start:start + size]
                if zlib.crc32(stored) == crc: found[info.filename] = stored
                try: found[info.filename] = z.read(info)
                except Exception: pass
    except Exception: pass
    return found
groups = open("groups", "rb")
def take():
    size = groups.read(4)
    return groups.read(struct.unpack("<I", size)[0]) if size else None
written = 0
while (before := take()) is not None:
    appended, removed, known = take(), take(), entries(before)
    written += (appended != b"") + (removed != b"")
    if appended and not known.items() <= entries(appended).items(): sys.exit(1)
    if removed and not {i for i in known.items() if i[0] != "doc.txt"} <= entries(removed).items():
        sys.exit(2)
if written < 4000: sys.exit(3)
)";

bool append(const std::string& path) {
  ZipWriter* const writer = ZipOpenWriter(path.c_str(), ZipModeAppend);
  return addEntry(writer, "added", "new") & (ZipCloseWriter(writer, nullptr) == 0);
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

void addGroup(std::string& groups, const std::string& bytes) {
  const std::uint32_t size = static_cast<std::uint32_t>(bytes.size());
  groups.append(reinterpret_cast<const char*>(&size), sizeof(size)).append(bytes);
}

TEST(NestedArchive, IsNeverTakenForTheOuterOne) {
  const support::TemporaryFolder folder;
  const auto python = [&](const std::string& code) {
    return support::run(folder.path(), "python3 -c '" + code + "'");
  };
  ASSERT_EQ(python(kMaker), 0);
  const std::string path = folder.file("outer.zip");
  const std::string whole = support::readFile(path);
  ASSERT_EQ(whole.size(), 335U);

  std::string groups;
  const auto check = [&](const std::string& bytes) {
    support::writeFile(path, bytes);
    EXPECT_NE(ZipLocateEntry(Reader(ZipOpenReader(path.c_str())).get(), "inner.txt", 0), 0);
    const bool copied = copyWithout(path, folder.file("copy.zip"));
    addGroup(groups, bytes);
    addGroup(groups, append(path) ? support::readFile(path) : "");
    addGroup(groups, copied ? support::readFile(folder.file("copy.zip")) : "");
  };
  for (std::size_t size = 0; size < whole.size(); ++size) {
    SCOPED_TRACE("cut at " + std::to_string(size));
    check(whole.substr(0, size));
  }
  for (std::size_t bit = 0; bit < 8 * whole.size(); ++bit) {
    SCOPED_TRACE("bit " + std::to_string(bit));
    std::string bytes = whole;
    bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ 1 << bit % 8);
    check(bytes);
  }
  support::writeFile(folder.file("groups"), groups);
  EXPECT_EQ(python(kChecker), 0);
}

}  // namespace
