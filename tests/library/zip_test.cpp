#include <random>

#include "library/zip.h"
#include "support/noise.h"

namespace {

TEST_F(Zip, AnArchiveThatWasNeverOpenedHasNoFile) {
  ZipArchive archive;
  EXPECT_EQ(archive.fileName(), nullptr);
  EXPECT_EQ(archive.access(), kReadWrite);
  EXPECT_EQ(archive.canRead(), 0);
  EXPECT_EQ(archive.canWrite(), 0);
  EXPECT_EQ(archive.open(path_.c_str(), kRead), 0);
}

TEST_F(Zip, ACreatedArchiveIsEmptyAndOpenedExclusively) {
  ZipArchive archive;
  ASSERT_EQ(archive.create(path_.c_str(), 0), 1);
  EXPECT_STREQ(archive.fileName(), path_.c_str());
  EXPECT_EQ(archive.access(), kReadWrite);
  EXPECT_EQ(archive.empty(), 1);
  Names none;
  EXPECT_EQ(archive.enumerate(none), 0);
  EXPECT_EQ(ZipArchive().open(path_.c_str(), kRead), 0);
  EXPECT_EQ(ZipArchive().open(path_.c_str(), 0), 0);
  EXPECT_EQ(FileSystem::FileExists(path_.c_str()), 0);
  EXPECT_EQ(ZipArchive().create(path_.c_str(), 1), 0);
  // The existing archive is neither replaced nor released.
  EXPECT_EQ(archive.create(path_.c_str(), 0), 0);
  EXPECT_EQ(archive.canWrite(), 1);
  // Opening releases it first.
  EXPECT_EQ(archive.open(path_.c_str(), kReadWrite), 1);

  EXPECT_EQ(archive.create(folder_.file("missing/a.zip").c_str(), 1), 0);
  EXPECT_EQ(archive.fileName(), nullptr);
  EXPECT_EQ(archive.canRead(), 0);
}

TEST_F(Zip, CopiesShareTheFile) {
  make({"x"});
  ZipArchive archive = writable();
  ZipArchive copy = archive;
  EXPECT_EQ(copy.exist("x"), 1);
  EXPECT_EQ(copy.close(), 1);
  EXPECT_EQ(archive.canRead(), 0);
  EXPECT_EQ(archive.exist("x"), 0);
  EXPECT_EQ(archive.empty(), 1);
  EXPECT_STREQ(archive.fileName(), path_.c_str());
  EXPECT_EQ(archive.access(), kReadWrite);
}

TEST_F(Zip, AnArchiveChangesOnlyWithBothRights) {
  make({"x"});
  for (const unsigned int access : {unsigned{GENERIC_WRITE}, kRead}) {
    ZipArchive archive = opened(access);
    EXPECT_EQ(archive.canRead(), access == kRead ? 1 : 0);
    EXPECT_EQ(archive.canWrite(), access == kRead ? 0 : 1);
    EXPECT_EQ(archive.exist("x"), access == kRead ? 1 : 0);
    EXPECT_EQ(archive.insert(bytesOf("y"), "y", "", 0), 0);
    EXPECT_EQ(archive.remove("x"), 0);
  }
}

TEST_F(Zip, ReadersShareTheFile) {
  make({"x"});
  const ZipArchive archive = readable();
  EXPECT_EQ(FileSystem::FileExists(path_.c_str()), 1);
  EXPECT_EQ(ZipArchive().open(path_.c_str(), kRead), 1);
  EXPECT_EQ(ZipArchive().open(path_.c_str(), kReadWrite), 0);
  EXPECT_EQ(ZipArchive::isZip(path_.c_str()), 1);
}

TEST_F(Zip, AFileOfOtherContentIsAnEmptyArchive) {
  for (const char* const text : {"PK", "", "P", "PX", "XK"}) {
    support::writeFile(path_, text);
    EXPECT_EQ(ZipArchive::isZip(path_.c_str()), std::string(text) == "PK" ? 1 : 0) << text;
  }
  EXPECT_EQ(readable().empty(), 1);
}

TEST_F(Zip, ListingAndLookup) {
  shell(
      "mkdir -p in/sub && echo f >in/sub/f && echo g >in/g && "
      "printf '\\n\\nwords\\n' | zip -qc a.zip in in/sub in/sub/f && zip -qg a.zip in/g");
  EXPECT_EQ(names(), (Names{"in/", "in/sub/", "in/sub/f", "in/g"}));
  const ZipArchive archive = readable();
  std::vector<std::pair<std::string, std::string>> entries{{"before", ""}};
  EXPECT_EQ(archive.content(entries), 1);
  EXPECT_EQ(entries, (std::vector<std::pair<std::string, std::string>>{
                         {"before", ""}, {"in/sub/f", "words"}, {"in/g", ""}}));
  EXPECT_EQ(archive.exist("in/sub/f"), 1);
  EXPECT_EQ(archive.exist("IN/SUB/F"), 0);
  EXPECT_EQ(archive.exist("in\\sub\\f"), 0);
  EXPECT_EQ(archive.exist(""), 0);
  EXPECT_EQ(archive.empty(), 0);
  Bytes bytes = bytesOf("kept");
  EXPECT_EQ(archive.extract("missing", bytes), 0);
  EXPECT_EQ(bytes, bytesOf("kept"));
}

TEST_F(Zip, InsertionReplacesOnlyOnRequest) {
  make({"a", "b"});
  EXPECT_EQ(writable().insert(bytesOf("new"), "a", "", 0), 0);
  EXPECT_EQ(writable().insert(bytesOf("new"), "a", "", 1), 1);
  EXPECT_EQ(names(), (Names{"b", "a"}));
  EXPECT_EQ(contentOf("a"), "new");
  EXPECT_EQ(contentOf("b"), "b");

  // If the source is missing, the old entry is removed all the same, unless it is the only one.
  const std::string missing = folder_.file("missing");
  EXPECT_EQ(writable().insert(missing.c_str(), "b", nullptr, 0), 0);
  EXPECT_EQ(readable().exist("b"), 1);
  EXPECT_EQ(writable().insert(missing.c_str(), "b", nullptr, 1), 0);
  EXPECT_EQ(writable().insert(missing.c_str(), "a", nullptr, 1), 0);
  EXPECT_EQ(names(), Names{"a"});

  // The only entry of an archive.
  EXPECT_EQ(writable().insert(bytesOf("second"), "a", "", 1), 1);
  EXPECT_EQ(names(), Names{"a"});
  EXPECT_EQ(contentOf("a"), "second");
}

// Entries from bytes and from files, as Python reads them.
TEST_F(Zip, InsertedEntries) {
  const support::TwoHoursEast zone;
  make({"first"});
  std::string words;
  std::minstd_rand random(1);
  for (int i = 0; i < 50000; ++i) words += "word " + std::to_string(random() % 500) + ' ';
  const std::string source = folder_.file("source.txt");
  support::writeFile(source, words);
  support::setWriteTime(source, 1600000001);
  write("empty", "");
  support::setWriteTime(folder_.file("empty"),
                        5700000000);  // past 2107, the last year of the format
  ZipArchive archive = writable();
  EXPECT_EQ(archive.insert(source.c_str(), "plain", "remark", 0), 1);
  EXPECT_EQ(archive.setEncryption("secret", ZipArchive::Encryption::Traditional), 1);
  EXPECT_EQ(archive.insert(bytesOf("x"), "bytes", "", 0), 1);
  EXPECT_EQ(archive.insert(source.c_str(), "in\\it", nullptr, 0), 1);
  EXPECT_EQ(archive.insert(source.c_str(), nullptr, nullptr, 0), 1);
  EXPECT_EQ(archive.insert(folder_.file("empty").c_str(), "", nullptr, 0), 1);
  archive.close();
  const std::string before = support::readFile(path_);
  EXPECT_EQ(writable().insert(folder_.file("missing").c_str(), "m", nullptr, 0), 0);
  EXPECT_EQ(writable().insert(folder_.name().c_str(), "folder", nullptr, 1), 0);
  EXPECT_EQ(writable().insert(bytesOf("x"), "comment", std::string(65536, 'c'), 0), 0);
  EXPECT_TRUE(support::readFile(path_) == before);
  EXPECT_EQ(names(), (Names{"first", "plain", "bytes", "in\\it", source, folder_.file("empty")}));
  EXPECT_EQ(contentOf("plain"), words);
  EXPECT_EQ(contentOf("in\\it", "secret"), words);
  EXPECT_EQ(contentOf("in\\it", "wrong"), "<nothing>");
  Bytes bytes = bytesOf("kept");
  EXPECT_EQ(readable().extract("in\\it", bytes), 0);
  EXPECT_EQ(bytes, bytesOf("kept"));
  // Files have local times, and bytes the present time in UTC. Content that deflate makes smaller
  // is deflated at the default level.
  const std::string hour = std::to_string(12 + static_cast<int>(zone.seconds()) / 3600);
  const std::string fileTime = "(2020, 9, 13, " + hour + ", 26, 40)";
  EXPECT_EQ(output(R"(python3 -c '
import datetime, zipfile, zlib
z = zipfile.ZipFile("a.zip")
now = datetime.datetime.now(datetime.timezone.utc).replace(tzinfo=None)
size = len(zlib.compress(z.read("plain"), 6))
for i in z.infolist():
    age = now - datetime.datetime(*i.date_time)
    time = i.date_time if i.date_time[0] in (2020, 2107) else abs(age) < datetime.timedelta(minutes=5)
    small = i.file_size < 10 or i.compress_size < size * 1.06
    print(time, i.comment, i.external_attr, i.compress_type, i.extract_version, small, i.CRC == 0)
')"),
            "True b'note of first' 0 0 10 True False\n" + fileTime +
                " b'remark' 32 8 20 True False\n" + "True b'' 0 0 20 True False\n" + fileTime +
                " b'' 32 8 20 True False\n" + fileTime + " b'' 32 8 20 True False\n" +
                "(2107, 12, 31, 23, 59, 58) b'' 32 0 20 True True\n");
}

TEST_F(Zip, InsertionIntoWhatIsNoArchive) {
  support::writeFile(path_, "just a text");
  std::vector<std::pair<std::string, std::string>> entries;
  EXPECT_EQ(readable().content(entries), 0);
  EXPECT_EQ(writable().insert(bytesOf("x"), "x", "", 1), 0);
  EXPECT_EQ(support::readFile(path_), "just a text");
  support::writeFile(path_, "");
  EXPECT_EQ(writable().insert(bytesOf("x"), "x", "", 1), 1);
  EXPECT_EQ(contentOf("x"), "x");
}

// An insertion reads and writes the new entry and the central directory only. A removal copies the
// other entries as they are stored.
TEST_F(Zip, DamagedEntriesAreKept) {
  make({"a", "b"});
  std::string bytes = support::readFile(path_);
  bytes[bytes.find("bb") + 1] = 'X';  // the data of "b"
  support::writeFile(path_, bytes);
  EXPECT_EQ(writable().insert(bytesOf("c"), "c", "", 0), 1);
  EXPECT_EQ(contentOf("b"), "<nothing>");
  EXPECT_EQ(contentOf("c"), "c");
  // The first failure ends the walk.
  EXPECT_FALSE(FRT_UNZIP_FILE(path_.c_str(), out_.c_str()));
  EXPECT_EQ(support::outputOf(out_, "ls"), "a\n");
  EXPECT_EQ(writable().remove("c"), 1);
  EXPECT_EQ(names(), (Names{"a", "b"}));
}

TEST_F(Zip, Removal) {
  make({"a", "B", "b", "c"});
  EXPECT_EQ(writable().remove("missing"), 0);
  EXPECT_EQ(writable().remove("b"), 1);
  EXPECT_EQ(writable().remove("c"), 1);
  EXPECT_EQ(names(), Names{"a"});
  const std::string one = support::readFile(path_);
  EXPECT_EQ(writable().remove("a"), 0);
  EXPECT_TRUE(support::readFile(path_) == one);

  // An archive of another program is the same again after an insertion and a removal.
  std::filesystem::remove(path_);
  shell(
      "echo x >x && echo y >y && 7z a -psecret a.zip x && "
      "printf 'on y\\n' | zip -qc a.zip y && echo on all | zip -qz a.zip");
  const std::string foreign = support::readFile(path_);
  EXPECT_EQ(writable().insert(bytesOf("new"), "new", "", 0), 1);
  EXPECT_EQ(writable().remove("new"), 1);
  EXPECT_TRUE(support::readFile(path_) == foreign);
}

// A name that is too long for the library is not taken for another one that it begins with.
TEST_F(Zip, LongNamesStayApart) {
  const std::string stem(260, 'n');
  python(R"(
with zipfile.ZipFile("a.zip", "w") as z:
    for n in (259, 260, 300): z.writestr("n" * n, str(n)))");
  EXPECT_EQ(readable().exist((stem + std::string(40, 'n')).c_str()), 0);
  EXPECT_EQ(readable().exist(stem.c_str()), 1);
  EXPECT_EQ(names(), (Names{stem.substr(1), stem, stem}));
  EXPECT_EQ(writable().remove(stem.substr(1).c_str()), 1);
  const std::string before = support::readFile(path_);
  write("source", "x");
  for (const std::string& name : {stem + 'n', stem + std::string(40, 'n'), stem + stem}) {
    for (const int overwrite : {0, 1}) {
      EXPECT_EQ(writable().insert(bytesOf("x"), name, "", overwrite), 0);
      EXPECT_EQ(writable().insert(folder_.file("source").c_str(), name.c_str(), "", overwrite), 0);
    }
  }
  EXPECT_TRUE(support::readFile(path_) == before);
  EXPECT_EQ(writable().insert(bytesOf("new 260"), stem, "", 0), 0);
  EXPECT_EQ(writable().insert(bytesOf("new 260"), stem, "", 1), 1);
  EXPECT_EQ(output("python3 -c 'import zipfile; z = zipfile.ZipFile(\"a.zip\");"
                   " print([z.read(n) for n in z.namelist()])'"),
            "[b'300', b'new 260']\n");
}

TEST_F(Zip, ExtractionToFiles) {
  make({"a", "sub\\b", "top/b", "c/d"});
  const std::string out = folder_.text() + "out\\";
  write("out/a", "an older and longer text");
  EXPECT_EQ(readable().extract(Names{"missing", "a", "sub\\b", "top/b", "c/d"}, out.c_str()), 1);
  EXPECT_EQ(read("out/a"), "a");
  EXPECT_EQ(read("out/sub/b"), "sub\\b");
  EXPECT_EQ(read("out/top/b"), "top/b");
  EXPECT_EQ(read("out/c/d"), "c/d");
  EXPECT_EQ(readable().extract("a", (out + "elsewhere").c_str()), 1);
  EXPECT_EQ(readable().extract(Names{"missing"}, out.c_str()), 0);
}

// Nothing is delivered of content whose CRC is wrong, whether it is read as a whole or in blocks:
// an empty and a deflated entry, a stored one, and one above the limit for reading in one call.
TEST_F(Zip, ExtractionIsWholeOrNothing) {
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{1000}, std::size_t{300'000}, std::size_t{30} << 20}) {
    SCOPED_TRACE(size);
    const std::string content = size > 1000 ? support::noise(size) : std::string(size, 'x');
    ZipArchive archive;
    ASSERT_EQ(archive.create(path_.c_str(), 1), 1);
    ASSERT_EQ(archive.insert(bytesOf(content), "e", "", 0), 1);
    const std::string existing = folder_.file("existing");
    const std::string fresh = folder_.file(std::to_string(size) + "/fresh");
    support::writeFile(existing, "old");
    Bytes bytes = bytesOf("old");
    for (const std::string& target : {fresh, existing}) {
      EXPECT_EQ(archive.extract("e", target.c_str()), 1);
      EXPECT_TRUE(support::readFile(target) == content);
    }
    EXPECT_EQ(archive.extract("e", bytes), size == 0 ? 0 : 1);
    EXPECT_TRUE(bytes == bytesOf(content));
    archive.close();

    std::string damaged = support::readFile(path_);
    damaged[damaged.rfind("PK\1\2") + 16] ^= 1;  // the CRC
    support::writeFile(path_, damaged);
    support::writeFile(existing, "old");
    bytes = bytesOf("old");
    archive = readable();
    EXPECT_EQ(archive.extract("e", (fresh + " 2").c_str()), 0);
    EXPECT_FALSE(support::exists(fresh + " 2"));
    EXPECT_EQ(archive.extract("e", existing.c_str()), 0);
    EXPECT_EQ(support::readFile(existing), "old");
    EXPECT_EQ(archive.extract("e", bytes), 0);
    EXPECT_TRUE(bytes.empty());
  }
}

// A lookup finds the data that were added last: by a walk, and by the index of a list.
TEST_F(Zip, OfEqualNamesTheLastCounts) {
  python(R"(
with zipfile.ZipFile("a.zip", "w") as z:
    for name, text in ("x", "old"), ("y", "y"), ("x", "new"), ("z", "z"): z.writestr(name, text))");
  EXPECT_EQ(names(), (Names{"x", "y", "x", "z"}));
  EXPECT_EQ(contentOf("x"), "new");
  EXPECT_EQ(readable().extract(Names{"z", "y", "x"}, (out_ + "\\").c_str()), 1);
  EXPECT_EQ(read("out/x"), "new");
}

class ZipFolders : public Zip {};

TEST_F(ZipFolders, TreeComesBack) {
  for (const char* name : {"empty", "a b/ü.txt", ".dot/.file", "Größe/ÄÖÜ äöü é ñ ç"}) {
    write(support::text(std::string("in/") + name), name);
  }
  for (const char* name : {"日本/語", "😀", "Привет"}) {
    if (support::kPlatform.everyName) write(std::string("in/") + name, "");
  }
  if (support::fileSystem().anyName) write("in/x\\y/back\\slash", "");
  write("in/empty", "");
  std::string deep;
  for (int i = 0; i < 30; ++i) deep += "d" + std::to_string(i) + "/";
  support::writeFile(in_ + "/" + deep + "file", std::string(1 << 20, 'z'));
  // An archive in the folder is not packed into itself.
  const std::string inside = in_ + "/a.zip";
  EXPECT_TRUE(FRT_ZIP_FOLDER(in_.c_str(), inside.c_str()));
  EXPECT_TRUE(FRT_ZIP_FOLDER(in_.c_str(), inside.c_str()));
  std::filesystem::rename(inside, path_);
  EXPECT_TRUE(FRT_UNZIP_FILE(path_.c_str(), (out_ + "//").c_str()));
  shell("diff -r in out && 7z t a.zip");
  // Over the files of the first call.
  EXPECT_TRUE(FRT_UNZIP_FILE(path_.c_str(), (out_ + "\\").c_str()));
  shell("diff -r in out");
}

TEST_F(ZipFolders, NothingToDo) {
  EXPECT_TRUE(FRT_ZIP_FOLDER(folder_.file("missing").c_str(), path_.c_str()));
  EXPECT_EQ(names(), Names{});
  EXPECT_EQ(support::readFile(path_).size(), 22U);
  EXPECT_TRUE(FRT_UNZIP_FILE(path_.c_str(), out_.c_str()));
  EXPECT_FALSE(FRT_UNZIP_FILE(folder_.file("none.zip").c_str(), out_.c_str()));
  support::writeFile(path_, "no archive");
  EXPECT_TRUE(FRT_UNZIP_FILE(path_.c_str(), out_.c_str()));
  EXPECT_FALSE(FRT_ZIP_FOLDER(in_.c_str(), folder_.file("none/a.zip").c_str()));
  EXPECT_FALSE(FRT_ZIP_FOLDER(in_.c_str(), folder_.name().c_str()));
  EXPECT_FALSE(std::filesystem::exists(out_));
}

TEST_F(ZipFolders, HostileNamesStayInside) {
  write("outside/file", "untouched");
  for (const char* name : {"..\\..\\x", "../outside/file", "a/../../outside/file", "/etc/x",
                           "\\\\srv\\share\\x", "A:\\x", "z:", ".."}) {
    SCOPED_TRACE(name);
    make({name});
    std::filesystem::remove_all(out_);
    std::filesystem::create_directory(out_);
    EXPECT_FALSE(FRT_UNZIP_FILE(path_.c_str(), out_.c_str()));
    // A prefix that the name continues makes no other component of it.
    for (const char* const prefix : {"\\", "\\p"}) {
      EXPECT_EQ(readable().extract(Names{name}, (out_ + prefix).c_str()), 0);
    }
    EXPECT_EQ(read("outside/file"), "untouched");
    EXPECT_EQ(support::outputOf(out_, "ls -A"), "");
  }
}

}  // namespace
