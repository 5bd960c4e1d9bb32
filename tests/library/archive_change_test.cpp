// Removals and insertions that are applied together: all of them or none, each failure with its
// reason.

#include <algorithm>

#include "library/executors.h"
#include "library/reports.h"
#include "library/zip.h"
#include "support/noise.h"

namespace {

using namespace FileSystem;

// Provides a text in pieces of at most `piece` bytes.
ContentSource sourceOf(std::string text, std::size_t piece = 100000) {
  return [text = std::move(text), piece, at = std::size_t{0}](unsigned char* buffer,
                                                              std::size_t size) mutable {
    const std::size_t count = std::min({size, piece, text.size() - at});
    std::copy_n(text.begin() + static_cast<std::ptrdiff_t>(at), count, buffer);
    at += count;
    return static_cast<std::ptrdiff_t>(count);
  };
}

class Change : public Zip {
 protected:
  Change() { std::filesystem::create_directory(folder_.path() / "in"); }

  // Creates a file with this name and content, and returns its path.
  std::string file(const std::string& name, const std::string& content) const {
    std::string path = folder_.file("in/" + name);
    support::writeFile(path, content);
    return path;
  }
  Report apply(ArchiveChange& change, const Options& options = {}) const {
    return change.apply(path_.c_str(), options);
  }
  // Applies a change that must fail, and returns why. Checks that nothing changes.
  Reason reasonOf(const std::function<void(ArchiveChange&)>& collect, const Options& options = {}) {
    const std::string before = support::readFile(path_);
    const std::size_t files = folder_.entries();
    ArchiveChange change;
    collect(change);
    report_ = apply(change, options);
    EXPECT_FALSE(report_);
    EXPECT_TRUE(support::readFile(path_) == before);
    EXPECT_EQ(folder_.entries(), files);
    return report_.reason;
  }
  // The name of the last item of that call if it is the only one that failed, for the same reason.
  std::string failed() const {
    for (const ItemResult& item : report_.items) {
      if ((item.reason != Reason::None) != (&item == &report_.items.back())) return "<others>";
    }
    if (report_.items.empty()) return "<none>";
    EXPECT_EQ(report_.items.back().reason, report_.reason);
    return report_.items.back().name;
  }

  Report report_;
};

TEST_F(Change, RemovesAndInserts) {
  const struct {
    Names removed;
    Names inserted;
    Names names;
    const char* contents;  // of all entries
  } rows[] = {
      {{}, {}, {"a", "B", "b", "d/c"}, "aBbd/c"},
      {{}, {"x", "y"}, {"a", "B", "b", "d/c", "x", "y"}, "aBbd/cnewnew"},
      {{"a", "d/c"}, {}, {"B", "b"}, "Bb"},
      {{"a", "a"}, {"x"}, {"B", "b", "d/c", "x"}, "Bbd/cnew"},
      // Names are those of one entry if they differ in the separators alone.
      {{}, {"b", "d\\c"}, {"a", "B", "b", "d\\c"}, "aBnewnew"},
      {{"b"}, {"b"}, {"a", "B", "d/c", "b"}, "aBd/cnew"},
      {{"a", "B", "b", "d/c"}, {}, {}, ""},
      {{"a", "B", "b", "d/c"}, {"x"}, {"x"}, "new"},
  };
  const std::string source = file("new", "new");
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    make({"a", "B", "b", "d/c"});
    ArchiveChange change;
    for (const std::string& name : row.removed) change.remove(name);
    for (const std::string& name : row.inserted) change.insertFile(source, name);
    const Report report = apply(change);
    EXPECT_TRUE(report);
    EXPECT_EQ(report.items.size(), row.removed.size() + row.inserted.size());
    EXPECT_EQ(names(), row.names);
    std::string contents;
    for (const std::string& name : names()) contents += contentOf(name.c_str());
    EXPECT_EQ(contents, row.contents);
    shell("python3 -m zipfile -t a.zip");
    // The change has nothing left to apply.
    const std::string after = support::readFile(path_);
    EXPECT_TRUE(apply(change).items.empty());
    EXPECT_TRUE(support::readFile(path_) == after);
  }
}

// The CRC of a stream is not known when its encryption begins.
TEST_F(Change, TakesAllKindsOfContent) {
  const std::string large = support::noise(5 << 20);
  const Options secret = Options().setPassword("secret");
  for (const Options& options :
       {Options(), secret, Options(secret).setEncryption(Encryption::Aes256)}) {
    const bool isEncrypted = !options.password().empty();
    const bool isAes = isEncrypted && options.encryption() == Encryption::Aes256;
    SCOPED_TRACE(isAes ? "AES" : isEncrypted ? "traditional" : "plain");
    make({"old"});
    ArchiveChange change;
    change.insertFile(file("f", "file"), "file", "note");
    change.insertBytes(bytesOf("bytes"), "bytes");
    change.insertBytes(bytesOf(large), "large bytes");
    change.insertFrom(sourceOf("stream", 1), "stream", "remark");
    change.insertFrom(sourceOf(large), "large stream");
    change.insertFrom(sourceOf(""), "nothing");
    EXPECT_TRUE(apply(change, options));
    EXPECT_EQ(output(R"(python3 -c '
import zipfile
for i in zipfile.ZipFile("a.zip").infolist(): print(i.comment.decode(), i.file_size)
')"),
              "note of old 3\nnote 4\n 5\n 5242880\nremark 6\n 5242880\n 0\n");
    for (int i = 0; i < 2; ++i) {
      if (isEncrypted) {
        EXPECT_EQ(contentOf("stream"), "<nothing>");
        EXPECT_EQ(contentOf("stream", "wrong"), "<nothing>");
      }
      EXPECT_EQ(contentOf("file", "secret"), "file");
      EXPECT_EQ(contentOf("bytes", "secret"), "bytes");
      EXPECT_TRUE(contentOf("large bytes", "secret") == large);
      EXPECT_EQ(contentOf("stream", "secret"), "stream");
      EXPECT_TRUE(contentOf("large stream", "secret") == large);
      shell("7z t -psecret a.zip");
      if (!isAes) shell("unzip -tqqP secret a.zip");
      // A rewrite copies them as they are stored.
      change.insertBytes(bytesOf("new"), "old");
      EXPECT_TRUE(apply(change));
    }
  }
}

TEST_F(Change, OfNothingCreatesAnEmptyArchive) {
  ArchiveChange change;
  EXPECT_TRUE(apply(change));
  EXPECT_EQ(std::filesystem::file_size(path_), 22U);
}

// Each row fails, with the item or without one.
TEST_F(Change, FailsForAReason) {
  make({"a", "b"});
  const std::string source = file("x", "x");
  const platform::FileHandle held = support::openFile(file("held", ""));
  const std::string missing = folder_.file("in/missing");
  const std::string longName(261, 'n');
  const ContentSource unreadable = [](unsigned char*, std::size_t) -> std::ptrdiff_t { return -1; };
  const ContentSource tooMuch = [](unsigned char*, std::size_t size) {
    return static_cast<std::ptrdiff_t>(size) + 1;
  };
  const Options keeps = Options().setExisting(ExistingFiles::Keep);
  const struct {
    std::function<void(ArchiveChange&)> collect;
    Reason reason;
    std::string failed;
    Options options = {};
  } rows[] = {
      {[&](auto& c) { c.insertFile(missing, "x"); }, Reason::Missing, "x"},
      {[&](auto& c) { c.insertFile(missing, "a"); }, Reason::Missing, "a"},
      {[&](auto& c) { c.insertFile(folder_.name(), "x"); }, Reason::IsAFolder, "x"},
      {[&](auto& c) { c.insertFile(folder_.file("in/held"), "x"); }, Reason::InUse, "x"},
      {[&](auto& c) { c.insertFile(path_, "x"); }, Reason::InUse, "x"},
      {[&](auto& c) { c.insertFrom(unreadable, "x"); }, Reason::ReadFailed, "x"},
      {[&](auto& c) { c.insertFrom(unreadable, "a"); }, Reason::ReadFailed, "a"},
      {[&](auto& c) { c.insertFrom(tooMuch, "x"); }, Reason::ReadFailed, "x"},
      {[&](auto& c) { c.insertFrom({}, "x"); }, Reason::ReadFailed, "x"},
      {[&](auto& c) { c.insertFile(source, longName); }, Reason::NameTooLong, longName},
      {[&](auto& c) { c.insertFile(source, ""); }, Reason::NameEscapes, ""},
      {[&](auto& c) { c.insertFile(source, "x", std::string(65536, 'c')); }, Reason::TooLarge, "x"},
      {[&](auto& c) { c.insertFile(source, "a"); }, Reason::Exists, "a", keeps},
      {[&](auto& c) { c.remove("A"); }, Reason::Missing, "A"},
      {[&](auto& c) { c.insertFile(source, "x"), c.remove("c"); }, Reason::Missing, "c"},
      {[&](auto& c) { c.insertFile(source, "x"), c.insertFile(missing, "y"); }, Reason::Missing,
       "y"},
      {[&](auto& c) { c.remove("a"), c.insertFile(missing, "y"); }, Reason::Missing, "y"},
      {[&](auto& c) { c.insertBytes({}, "d/x"), c.insertBytes({}, "d\\x"); }, Reason::NameTaken,
       "d\\x"},
      {[&](auto& c) { c.insertBytes({}, "x"); }, Reason::UnsupportedEncryption, "<none>",
       Options().setPassword("p").setEncryption(Encryption::Unsupported)},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    EXPECT_EQ(reasonOf(row.collect, row.options), row.reason);
    EXPECT_EQ(failed(), row.failed);
    if (row.reason == Reason::NameTaken) {
      EXPECT_EQ(report_.items.back().other, "d/x");
    }
    // No file is made for what cannot be applied.
    const std::string path = std::exchange(path_, folder_.file("new.zip"));
    if (row.reason != Reason::Exists && row.failed != path) {
      reasonOf(row.collect, row.options);
      EXPECT_FALSE(support::exists(path_));
    }
    path_ = path;
  }
}

TEST_F(Change, NamesEachFileThatCannotBeOpened) {
  make({"a", "b"});
  const platform::FileHandle held = support::openFile(file("held", ""));
  EXPECT_EQ(reasonOf([&](auto& c) {
              c.remove("a");
              c.insertFile(folder_.file("in/missing"), "missing");
              c.insertBytes({1}, "bytes");
              c.insertFile(folder_.file("in/held"), "held");
              c.insertBytes({1}, "more");
            }),
            Reason::Missing);
  EXPECT_EQ(reasonsOf(report_), (Reasons{{"a", Reason::None},
                                         {"missing", Reason::Missing},
                                         {"bytes", Reason::None},
                                         {"held", Reason::InUse}}));
}

TEST_F(Change, FailsForAReasonOfTheArchive) {
  make({"a", "b"});
  const auto insert = [](ArchiveChange& change) { change.insertBytes({'x'}, "x"); };
  const auto replace = [](ArchiveChange& change) { change.insertBytes({'x'}, "a"); };
  const auto remove = [](ArchiveChange& change) { change.remove("a"); };
  const auto check = [&](Reason reason) {
    EXPECT_EQ(reasonOf(insert), reason);
    EXPECT_EQ(reasonOf(replace), reason);
    EXPECT_EQ(reasonOf(remove), reason);
    EXPECT_EQ(failed(), "<none>");
  };
  {
    SCOPED_TRACE("in use");
    const platform::FileHandle held = support::openFile(path_);
    check(Reason::InUse);
  }
  {
    SCOPED_TRACE("being read");
    const platform::FileHandle held = support::openFile(path_, GENERIC_READ, FILE_SHARE_READ);
    check(Reason::InUse);
  }
  {
    SCOPED_TRACE("read-only");
    support::makeReadOnly(path_);
    check(Reason::NoPermission);
    std::filesystem::permissions(support::pathOf(path_), std::filesystem::perms::owner_write,
                                 std::filesystem::perm_options::add);
  }
  for (const std::string& content : {std::string("just a text"), std::string(100000, 'x'),
                                     support::readFile(path_).substr(0, 100)}) {
    SCOPED_TRACE(content.substr(0, 20));
    support::writeFile(path_, content);
    check(Reason::NotAnArchive);
  }
  {
    SCOPED_TRACE("split");
    write("n", support::noise(200000));
    shell("zip -q -s 64k s.zip n && mv s.zip a.zip");
    check(Reason::SplitArchive);
  }
  path_ = folder_.file("in");
  check(Reason::IsAFolder);
  path_ = folder_.file("missing/a.zip");
  EXPECT_EQ(reasonOf(insert), Reason::Missing);
  EXPECT_EQ(failed(), "<none>");
  EXPECT_EQ(reasonOf(remove), Reason::Missing);
  EXPECT_EQ(failed(), "a");
}

// What a call reports.
struct Calls {
  std::vector<Progress> all;
  Names names;

  Options options() {
    return Options().setProgress([this](const Progress& progress) {
      all.push_back(progress);
      if (names.empty() || names.back() != progress.name) names.emplace_back(progress.name);
      return true;
    });
  }
};

TEST_F(Change, ReportsProgress) {
  const std::string large = file("large", support::noise(1 << 20));
  const auto rowsFor = [&](bool withStream) {
    ArchiveChange change;
    change.remove("a");
    change.insertFile(large, "b");
    change.insertBytes(bytesOf("new"), "bytes");
    if (withStream) change.insertFrom(sourceOf("stream"), "stream");
    make({"a", "b", "kept"});
    Calls calls;
    EXPECT_TRUE(apply(change, calls.options()));
    return calls;
  };
  const Calls known = rowsFor(false);
  EXPECT_EQ(known.names, (Names{"a", "kept", "b", "bytes", path_}));
  EXPECT_EQ(known.all.back().bytesExpected, (1U << 20) + 3 + 4);
  EXPECT_EQ(known.all.back().bytesDone, known.all.back().bytesExpected);
  EXPECT_EQ(known.all.back().filesExpected, 3U);
  EXPECT_EQ(known.all.back().filesDone, 3U);
  std::uint64_t done = 0;
  for (const Progress& progress : known.all) {
    EXPECT_GE(progress.bytesDone, done);
    EXPECT_LE(progress.bytesDone, done + (1 << 18));
    done = progress.bytesDone;
  }
  const Calls unknown = rowsFor(true);
  EXPECT_EQ(unknown.all.back().bytesExpected, 0U);
  EXPECT_EQ(unknown.all.back().filesDone, 4U);
}

// Cancels each operation at its first, second, ... callback, by a result and by an exception.
class Cancelling : public Change {
 protected:
  // Returns what is in the folder, with the content of the archive.
  std::string state() const {
    Names files;
    for (const auto& item : std::filesystem::recursive_directory_iterator(folder_.path())) {
      files.push_back(support::textOf(item.path()));
    }
    std::sort(files.begin(), files.end());
    std::string state;
    for (const std::string& name : files) state += name + '\n';
    return state + support::readFile(path_);
  }
  // Checks that a call that is cancelled changes nothing. Returns the number of its callbacks.
  int cancelAtEach(const std::function<Report(const Options&)>& run, End end) {
    const std::string before = state();
    const auto check = [&](const Report&) { EXPECT_TRUE(state() == before); };
    const int count = atEachCallback(
        end, [] {}, run, check);
    EXPECT_TRUE(state() != before);
    return count;
  }
};

TEST_F(Cancelling, LeavesAllAsItWas) {
  const std::string large = file("large", support::noise(3 << 20));
  file("small", "new");
  const auto applied = [this](const std::function<void(ArchiveChange&)>& collect) {
    return [this, collect](const Options& options) {
      ArchiveChange change;
      collect(change);
      return apply(change, options);
    };
  };
  const auto pack = [this](const Options& options) {
    return packFolder(in_.c_str(), path_.c_str(), options);
  };
  const auto append = applied([&](ArchiveChange& change) {
    change.insertFile(large, "x");
    change.insertBytes({'n'}, "y");
    change.insertFrom(sourceOf("z"), "z");
  });
  const auto withWorkers = [](const std::function<Report(const Options&)>& run) {
    return [run](const Options& options) {
      return run(Options(options).setExecutor(runInReverse, 2));
    };
  };
  const struct {
    const char* name;
    bool isNew;  // there is no archive
    std::function<Report(const Options&)> run;
  } rows[] = {
      {"append", false, append},
      {"create", true, append},
      {"remove", false, applied([](ArchiveChange& change) { change.remove("a"); })},
      {"replace", false, applied([&](ArchiveChange& change) {
         change.remove("a");
         change.insertFile(large, "b");
       })},
      {"pack", true, pack},
      {"pack over an archive", false, pack},
      {"append with workers", false, withWorkers(append)},
      {"pack over an archive with workers", false, withWorkers(pack)},
  };
  for (const auto& row : rows) {
    for (const End end : {End::ByFalse, End::ByException}) {
      SCOPED_TRACE(std::string(row.name) + (end == End::ByException ? " by exception" : ""));
      std::filesystem::remove(path_);
      if (!row.isNew) {
        make({"a", "b"});
        ASSERT_EQ(writable().insert(large.c_str(), "large", nullptr, 0), 1);
      }
      EXPECT_GT(cancelAtEach(row.run, end), 5);
    }
  }
}

TEST_F(Cancelling, AnExceptionOfASourcePassesThrough) {
  for (const bool isNew : {false, true}) {
    std::filesystem::remove(path_);
    if (!isNew) make({"a"});
    const std::string before = state();
    ArchiveChange change;
    change.insertBytes({'x'}, "x");
    change.insertFrom([](unsigned char*, std::size_t) -> std::ptrdiff_t { throw Stop(); }, "a");
    EXPECT_THROW(apply(change), Stop);
    EXPECT_TRUE(state() == before);
    // The change is empty, and can be used again.
    change.insertBytes({'y'}, "y");
    EXPECT_EQ(apply(change).items.size(), 1U);
  }
}

}  // namespace
