// Archive: records, reasons, progress and cancelling.

#include <algorithm>
#include <stdexcept>

#include "library/reports.h"
#include "library/zip.h"
#include "support/noise.h"

namespace {

using namespace FileSystem;

class ArchiveReading : public Zip {
 protected:
  static Entry entryOf(const Archive& archive, const char* name) {
    const std::optional<Entry> entry = archive.find(name);
    EXPECT_TRUE(entry) << name;
    return entry.value_or(Entry());
  }
  // Where an entry is unpacked.
  std::string pathOf(std::string name) const {
    std::replace(name.begin(), name.end(), '\\', '/');
    return out_ + '/' + name;
  }
  // Changes a byte of the last entry's CRC in the central directory.
  void damageLast() const {
    std::string bytes = support::readFile(path_);
    bytes[bytes.rfind("PK\1\2") + 16] ^= 1;
    support::writeFile(path_, bytes);
  }
};

TEST_F(ArchiveReading, RecordsHaveAllValues) {
  python(R"(
z = zipfile.ZipFile("a.zip", "w")
def add(name, data, method=0, comment=b"", mode=0, system=3):
    info = zipfile.ZipInfo(name, (2024, 2, 29, 12, 34, 56))
    info.compress_type, info.comment, info.create_system = method, comment, system
    info.external_attr = mode << 16 | 1
    z.writestr(info, data)
add("text", "x" * 1000, 8, "note".encode(), 0o100640)
add("dir/", "", 0, b"", 0o40755)
add("link", "text", 0, b"", 0o120777)
add("dos", "abc", 12, b"", 0o777, 0)
z.comment = b"of all"
z.close())");
  const Archive archive = openArchive();
  EXPECT_EQ(archive.comment(), "of all");
  const std::vector<Entry>& entries = archive.entries();
  ASSERT_EQ(entries.size(), 4U);

  const Entry& text = entries[0];
  EXPECT_EQ(text.name, "text");
  EXPECT_EQ(text.comment, "note");
  EXPECT_EQ(text.size, 1000U);
  EXPECT_LT(text.storedSize, 100U);
  EXPECT_EQ(text.method, 8);
  EXPECT_EQ(text.crc, 0x3b41c9e6U);
  EXPECT_EQ(text.mode, 0100640U);
  EXPECT_EQ(text.attributes, 1U);
  EXPECT_EQ(text.modified.year, 2024);
  EXPECT_EQ(text.modified.month, 2);
  EXPECT_EQ(text.modified.day, 29);
  EXPECT_EQ(text.modified.hour, 12);
  EXPECT_EQ(text.modified.minute, 34);
  EXPECT_EQ(text.modified.second, 56);
  EXPECT_FALSE(text.isFolder);
  EXPECT_FALSE(text.isLink);

  EXPECT_TRUE(entries[1].isFolder);
  EXPECT_TRUE(entries[2].isLink);
  EXPECT_STREQ(methodName(entries[3].method), "bzip2");
  EXPECT_EQ(entries[3].mode, 0U);
}

// A stored entry of zeros, which are a hole in the file.
TEST_F(ArchiveReading, EntriesOfMoreThanFourGigabytes) {
  if (!support::fileSystem().largeFiles) GTEST_SKIP() << "no sparse files here";
  constexpr std::uint64_t kSize = (std::uint64_t{4} << 30) + 5;
  python(R"(
f = open("a.zip", "wb")
z = zipfile.ZipFile(f, "w")
z.writestr("before", "1")
hole = zipfile.ZipInfo("hole")
hole.file_size = hole.compress_size = (4 << 30) + 5
hole.CRC = 0xb1c2a1a3
hole.header_offset = f.tell()
f.write(hole.FileHeader(zip64=True))
f.seek(hole.file_size, 1)
z.start_dir = f.tell()
z.filelist.append(hole)
z.writestr("after", "2")
z.close())");
  {
    const Archive archive = openArchive();
    ASSERT_EQ(archive.entries().size(), 3U);
    const Entry hole = archive.entries()[1];
    EXPECT_EQ(hole.size, kSize);
    EXPECT_EQ(hole.storedSize, kSize);
    for (const ItemResult& item : archive.test(archive.entries()).items) {
      EXPECT_EQ(item.reason, Reason::None) << item.name;
    }
    std::vector<unsigned char> bytes;
    EXPECT_EQ(archive.readAll(hole, bytes), Reason::TooLarge);
    EXPECT_EQ(archive.unusedBytes(), 0U);
  }
  EXPECT_EQ(writable().insert(bytesOf("3"), "added", "", 0), 1);
  const char* const kOthers =
      "python3 -c 'import zipfile; z = zipfile.ZipFile(\"a.zip\");"
      " print([(n, z.read(n)) for n in z.namelist() if n != \"hole\"])'";
  const std::string others = "[('before', b'1'), ('after', b'2'), ('added', b'3')]\n";
  EXPECT_EQ(output(kOthers), others);
  EXPECT_EQ(writable().remove("hole"), 1);
  EXPECT_EQ(output(kOthers), others);
  EXPECT_LT(std::filesystem::file_size(path_), 1000U);
}

TEST_F(ArchiveReading, OpeningSaysWhyItFails) {
  make({"a"});
  write("text", "no archive");
  write("part", std::string("PK\7\10", 4) + std::string(40, 'x'));
  std::filesystem::create_directory(folder_.file("folder"));
  const std::pair<const char*, Reason> kRows[] = {{"missing", Reason::Missing},
                                                  {"none/a.zip", Reason::Missing},
                                                  {"folder", Reason::IsAFolder},
                                                  {"text", Reason::NotAnArchive},
                                                  {"part", Reason::SplitArchive}};
  for (const auto& [name, reason] : kRows) {
    Archive archive = openArchive();
    EXPECT_EQ(archive.open(folder_.file(name).c_str()), reason) << name;
    EXPECT_FALSE(archive.isOpen()) << name;
  }
  const platform::FileHandle writer = support::openFile(path_, GENERIC_WRITE, FILE_SHARE_READ);
  EXPECT_EQ(Archive().open(path_.c_str()), Reason::InUse);
}

TEST_F(ArchiveReading, AClosedArchiveHasNothing) {
  Archive archive;
  std::vector<unsigned char> bytes;
  EXPECT_TRUE(archive.entries().empty());
  EXPECT_FALSE(archive.contains("a"));
  EXPECT_EQ(archive.readAll({}, bytes), Reason::Missing);
  EXPECT_EQ(archive.unpack({}, out_.c_str()).reason, Reason::Missing);
  EXPECT_EQ(archive.test({}).reason, Reason::Missing);
}

TEST_F(ArchiveReading, ReadingSaysWhyItFails) {
  shell("printf x >secret && zip -qP secret a.zip secret");
  python(R"(
z = zipfile.ZipFile("a.zip", "a")
z.writestr("PPMd", "x")
z.writestr("strong", "x")
z.writestr("damaged", "x")
z.close()
data = bytearray(open("a.zip", "rb").read())
data[data.rindex(b"PK\1\2", 0, data.rindex(b"strong")) + 8] |= 0x41
data[data.index(b"PPMd") - 22] = data[data.rindex(b"PPMd") - 36] = 98
open("a.zip", "wb").write(data))");
  damageLast();
  const std::tuple<const char*, const char*, Reason> kRows[] = {
      {"secret", "", Reason::PasswordMissing},
      {"secret", "wrong", Reason::PasswordWrong},
      {"secret", "secret", Reason::None},
      {"PPMd", "", Reason::UnsupportedMethod},
      {"strong", "x", Reason::UnsupportedEncryption},
      {"damaged", "", Reason::Damaged}};
  const Archive archive = openArchive();
  for (const auto& [name, password, reason] : kRows) {
    SCOPED_TRACE(name);
    const Entry entry = entryOf(archive, name);
    const Options options = Options().setPassword(password);
    std::vector<unsigned char> bytes;
    EXPECT_EQ(archive.readAll(entry, bytes, options), reason);
    EXPECT_EQ(archive.extract(entry, folder_.file("file").c_str(), options), reason);
    EXPECT_EQ(archive.test({entry}, options).items[0].reason, reason);
  }
  // Of another archive, or made up.
  for (const std::uint64_t position :
       {std::uint64_t{1}, std::uint64_t{1} << 40, ~std::uint64_t{0}}) {
    Entry entry;
    entry.position = position;
    std::vector<unsigned char> bytes;
    EXPECT_EQ(archive.readAll(entry, bytes), Reason::Missing) << position;
  }
}

// Some names are those of one file, and the file `late` is created when the call has begun.
TEST_F(ArchiveReading, UnpackingReportsEachEntry) {
  struct Row {
    const char* name;
    Reason replacing;
    Reason keeping;
    const char* replaced;  // the content of the file afterwards
    const char* kept;
  };
  const std::vector<Row> rows{
      {"b/c", Reason::None, Reason::None, "b/c", "b/c"},
      {"late", Reason::None, Reason::Exists, "late", "mine"},
      {"existing", Reason::None, Reason::Exists, "existing", "mine"},
      {"b\\c", Reason::SameFile, Reason::SameFile, "b/c", "b/c"},
      {"./existing", Reason::SameFile, Reason::Exists, "existing", "mine"},
      {"../out", Reason::NameEscapes, Reason::NameEscapes, "", ""},
      {"folder", Reason::IsAFolder, Reason::IsAFolder, "", ""},
      {"existing/x", Reason::NotAFolder, Reason::NotAFolder, "", ""},
      {"last", Reason::None, Reason::None, "last", "last"},
      {"damaged", Reason::Damaged, Reason::Damaged, "", ""},
  };
  Names list;
  for (const Row& row : rows) list.emplace_back(row.name);
  make(list);
  damageLast();
  const Archive archive = openArchive();

  for (const ExistingFiles mode : {ExistingFiles::Replace, ExistingFiles::Keep}) {
    const bool keeps = mode == ExistingFiles::Keep;
    SCOPED_TRACE(keeps);
    std::filesystem::remove_all(out_);
    support::writeFile(out_ + "/existing", "mine");
    std::filesystem::create_directory(out_ + "/folder");
    Options options;
    options.setExisting(mode);
    options.setProgress([&](const Progress& progress) {
      const bool begins = progress.name == "late" && progress.filesDone == 1;
      if (begins && progress.bytesDone == 3) support::writeFile(out_ + "/late", "mine");
      return true;
    });
    const Report report = archive.unpack(archive.entries(), out_.c_str(), options);
    EXPECT_EQ(report.reason, Reason::None);
    ASSERT_EQ(report.items.size(), rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const Row& row = rows[i];
      SCOPED_TRACE(row.name);
      const ItemResult& item = report.items[i];
      EXPECT_EQ(item.name, row.name);
      EXPECT_EQ(item.reason, keeps ? row.keeping : row.replacing);
      EXPECT_EQ(item.other, item.reason == Reason::SameFile ? row.replaced : "");
      const std::string content = keeps ? row.kept : row.replaced;
      if (content.empty()) continue;
      EXPECT_EQ(support::readFile(pathOf(row.name)), content);
    }
    EXPECT_FALSE(support::exists(out_ + "/damaged"));
  }
}

TEST_F(ArchiveReading, UnpacksFoldersAndTheLastOfEqualNames) {
  python(R"(
z = zipfile.ZipFile("a.zip", "w")
for name, data in ("deep/empty/", ""), ("twice", "first"), ("../escapes/", ""), ("twice", "last"):
    z.writestr(name, data)
z.close())");
  const Archive archive = openArchive();
  const Report report = archive.unpack(archive.entries(), (out_ + "/new/place").c_str());
  ASSERT_EQ(report.items.size(), 4U);
  EXPECT_EQ(report.items[0].reason, Reason::None);
  EXPECT_TRUE(report.items[0].isFolder);
  EXPECT_EQ(report.items[1].reason, Reason::NameTaken);
  EXPECT_EQ(report.items[2].reason, Reason::NameEscapes);
  EXPECT_EQ(report.items[3].reason, Reason::None);
  EXPECT_TRUE(std::filesystem::is_directory(out_ + "/new/place/deep/empty"));
  EXPECT_EQ(support::readFile(out_ + "/new/place/twice"), "last");
  EXPECT_FALSE(support::exists(out_ + "/new/escapes"));

  write("file", "x");
  EXPECT_EQ(archive.unpack(archive.entries(), folder_.file("file").c_str()).reason,
            Reason::NotAFolder);
}

TEST_F(ArchiveReading, NamesAreNotCut) {
  const std::string name(300, 'n');
  python("z = zipfile.ZipFile('a.zip', 'w'); z.writestr('n' * 300, 'content'); z.close()");
  const Archive archive = openArchive();
  EXPECT_EQ(archive.entries()[0].name, name);
  EXPECT_TRUE(archive.contains(name.c_str()));
  EXPECT_FALSE(archive.contains(name.substr(1).c_str()));
}

// While it is open, other programs may read the archive, and none may change it.
TEST_F(ArchiveReading, KeepsTheArchiveFromChanging) {
  make({"a"});
  Archive archive = openArchive();
  EXPECT_EQ(contentOf("a"), "a");
  EXPECT_EQ(ZipArchive().open(path_.c_str(), kReadWrite), 0);
  archive.close();
  EXPECT_EQ(writable().insert(bytesOf("b"), "b", "", 0), 1);
}

// Of the kinds of content that pass in pieces or as a whole.
class ArchiveProgress : public ArchiveReading {
 protected:
  void SetUp() override {
    ZipArchive archive;
    ASSERT_EQ(archive.create(path_.c_str(), 1), 1);
    contents_ = {{"noise", support::noise(600'000)},
                 {"sub\\small", "small"},
                 {"zeros", std::string(3'000'000, '0')}};
    for (const auto& [name, content] : contents_) {
      ASSERT_EQ(archive.insert(bytesOf(content), name, "", 0), 1);
    }
  }

  std::map<std::string, std::string> contents_;
};

TEST_F(ArchiveProgress, CountsBytesAndFiles) {
  const Archive archive = openArchive();
  Progress last;
  std::size_t calls = 0;
  Options options;
  options.setProgress([&](const Progress& progress) {
    EXPECT_GE(progress.bytesDone, last.bytesDone);
    EXPECT_GE(progress.filesDone, last.filesDone);
    EXPECT_EQ(progress.bytesExpected, 3'600'005U);
    EXPECT_EQ(progress.filesExpected, 3U);
    EXPECT_EQ(contents_.count(std::string(progress.name)), 1U);
    last = progress;
    ++calls;
    return true;
  });
  EXPECT_TRUE(archive.unpack(archive.entries(), out_.c_str(), options));
  EXPECT_EQ(last.bytesDone, 3'600'005U);
  EXPECT_EQ(last.filesDone, 3U);
  EXPECT_GT(calls, 6U);
  last = {};
  EXPECT_TRUE(archive.test(archive.entries(), options));
  EXPECT_EQ(last.bytesDone, 3'600'005U);
}

// At each callback in turn, until the call comes to its end: every file is the old or the new one,
// and the report says which.
TEST_F(ArchiveProgress, CancellingLeavesOldOrNewFiles) {
  const Archive archive = openArchive();
  const auto prepare = [&] {
    std::filesystem::remove_all(out_);
    support::writeFile(out_ + "/noise", "old");
  };
  const auto unpack = [&](const Options& options) {
    return archive.unpack(archive.entries(), out_.c_str(), options);
  };
  const auto check = [&](const Report& report) {
    std::size_t known = 0;
    for (const auto& [name, content] : contents_) {
      if (!support::exists(pathOf(name))) continue;
      ++known;
      const std::string now = support::readFile(pathOf(name));
      EXPECT_TRUE(now == content || (name == "noise" && now == "old")) << name;
    }
    std::size_t files = 0;
    for (const auto& item : std::filesystem::recursive_directory_iterator(out_)) {
      if (!item.is_directory()) ++files;
    }
    EXPECT_EQ(files, known);
    for (const ItemResult& item : report.items) {
      if (item.reason == Reason::None) {
        EXPECT_TRUE(support::readFile(pathOf(item.name)) == contents_[item.name]) << item.name;
      } else {
        EXPECT_EQ(item.reason, Reason::Cancelled) << item.name;
      }
    }
  };
  for (const End end : {End::ByFalse, End::ByException}) {
    atEachCallback(end, prepare, unpack, check);
    for (const auto& [name, content] : contents_) {
      EXPECT_TRUE(support::readFile(pathOf(name)) == content) << name;
    }
  }
}

TEST_F(ArchiveProgress, SinksGetPiecesAndMayCancel) {
  const Archive archive = openArchive();
  for (const auto& [name, content] : contents_) {
    std::string read;
    const auto append = [&](const unsigned char* data, std::size_t size) {
      EXPECT_LE(size, std::size_t{256} << 10);
      read.append(reinterpret_cast<const char*>(data), size);
      return true;
    };
    EXPECT_EQ(archive.read(entryOf(archive, name.c_str()), append), Reason::None);
    EXPECT_TRUE(read == content) << name;
  }
  const Entry entry = entryOf(archive, "noise");
  std::size_t pieces = 0;
  const auto refuse = [&](const unsigned char*, std::size_t) { return ++pieces < 2; };
  EXPECT_EQ(archive.read(entry, refuse), Reason::Cancelled);
  EXPECT_EQ(pieces, 2U);
  const auto fail = [](const unsigned char*, std::size_t) -> bool {
    throw std::logic_error("sink");
  };
  EXPECT_THROW(archive.read(entry, fail), std::logic_error);
  // The archive is still usable.
  std::vector<unsigned char> bytes;
  EXPECT_EQ(archive.readAll(entry, bytes), Reason::None);
}

}  // namespace
