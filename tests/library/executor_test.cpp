// Packing and inserting with threads that the host lends: the archive has the same bytes, and
// failures are those of a call without them.

#include "library/executors.h"
#include "library/reports.h"
#include "library/zip.h"
#include "support/noise.h"

namespace {

using namespace FileSystem;

constexpr std::size_t kPart = 4 << 20;
constexpr std::size_t kSmall = 100;  // files

// Returns text that deflates fast, and differs from that of other seeds.
std::string textOf(std::size_t size, std::size_t seed = 0) {
  std::string text;
  for (std::size_t i = seed; text.size() < size; ++i) {
    text += "line " + std::to_string(i * i) + std::string(i % 40, 'x') + '\n';
  }
  text.resize(size);
  return text;
}

// The empty stored block between two parts of an entry.
constexpr std::string_view kPartEnd("\0\0\xFF\xFF", 4);

std::size_t countOf(std::string_view text, std::string_view sought) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(sought, at)) != text.npos; at += sought.size()) ++count;
  return count;
}

struct Kind {
  const char* name;
  Options options;
};

std::vector<Kind> kinds() {
  std::vector<Kind> kinds = {{"default", Options()},
                             {"fastest", Options().setLevel(1)},
                             {"stored", Options().setLevel(0)},
                             {"files only", Options().setFolders(false).setPermissions(false)}};
  if (VESK_ZSTD != 0) kinds.push_back({"Zstandard", Options().setMethod(Method::Zstandard)});
  return kinds;
}

class HostExecutor : public Zip {
 protected:
  void SetUp() override {
    for (std::size_t i = 0; i < kSmall; ++i) add("small/" + std::to_string(i), textOf(i * 50, i));
    add("empty", "");
    add("noise", support::noise(kPart + 100'000));
    add("part", textOf(kPart));
    add("part and a byte", textOf(kPart + 1));
    add("three parts", textOf(2 * kPart + 1000));
  }

  void add(const std::string& name, const std::string& content) { write("in/" + name, content); }
  Report pack(const Options& options) const {
    return packFolder(in_.c_str(), path_.c_str(), options);
  }
  // Inserts every kind of content.
  Report insert(const Options& options) const {
    ArchiveChange change;
    change.insertFile(folder_.file("in/three parts"), "three parts");
    change.insertFile(folder_.file("in/part"), "with\\part", "note");
    change.insertFolder(in_, "folder");
    change.insertBytes(bytesOf(textOf(1000)), "bytes");
    change.insertBytes(bytesOf(textOf(kPart + 1)), "large bytes");
    change.insertFrom([size = 0](unsigned char*, std::size_t) mutable { return size++ == 0; },
                      "byte");
    for (std::size_t i = 1; i < kSmall; ++i) {
      const std::string name = "small/" + std::to_string(i);
      change.insertFile(folder_.file("in/" + name), name);
    }
    return change.apply(path_.c_str(), options);
  }
  // Returns the archive that a call writes.
  std::string archiveOf(const std::function<Report()>& call) const {
    std::filesystem::remove(path_);
    const Report report = call();
    EXPECT_EQ(report.reason, Reason::None);
    return support::readFile(path_);
  }
};

TEST_F(HostExecutor, ArchivesHaveTheSameBytes) {
  const std::tuple<const char*, unsigned int, Executor> rows[] = {
      {"1 worker", 1, runOnThreads},
      {"2 workers", 2, runOnThreads},
      {"4 workers", 4, runOnThreads},
      {"in reverse order", 4, runInReverse},
      {"no task", 4, [](const std::vector<Task>&) {}},
      {"the first task", 4, [](const std::vector<Task>& tasks) { tasks.front()(); }},
  };
  for (const Kind& kind : kinds()) {
    const std::string expected = archiveOf([&] { return pack(kind.options); });
    for (const auto& [name, workers, executor] : rows) {
      SCOPED_TRACE(std::string(kind.name) + ", " + name);
      const Options options = Options(kind.options).setExecutor(executor, workers);
      EXPECT_TRUE(archiveOf([&] { return pack(options); }) == expected);
    }
  }
}

// Data that take long to deflate are cut into parts that take a limited time, usual data are not.
TEST_F(HostExecutor, HardDataAreDeflatedInSmallParts) {
  std::string letters = support::noise(1 << 20);
  for (char& c : letters) c = "acgt"[c & 3];
  const std::string text = textOf(1 << 20);
  const struct {
    const char* name;
    std::string content;
    int level;
    std::size_t least, most;  // parts
  } rows[] = {
      {"text", text + text, -1, 1, 1},        {"zeros", std::string(2 << 20, '\0'), -1, 1, 1},
      {"letters", letters, -1, 6, 12},        {"letters, best", letters, 9, 8, 16},
      {"letters, fastest", letters, 1, 1, 1}, {"text and letters", text + letters, -1, 7, 13},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string file = folder_.file("file");
    support::writeFile(file, row.content);
    const auto archiveWith = [&](const Options& options) {
      return archiveOf([&] {
        ArchiveChange change;
        change.insertFile(file, "entry");
        return change.apply(path_.c_str(), Options(options).setLevel(row.level));
      });
    };
    const std::string archive = archiveWith({});
    const std::size_t parts = 1 + countOf(archive, kPartEnd);
    EXPECT_GE(parts, row.least);
    EXPECT_LE(parts, row.most);
    EXPECT_TRUE(archiveWith(Options().setExecutor(runOnThreads, 2)) == archive);
    EXPECT_TRUE(contentOf("entry") == row.content);
  }
}

TEST_F(HostExecutor, EncryptedEntriesHaveTheSameContent) {
  for (const Encryption encryption : {Encryption::Traditional, Encryption::Aes256}) {
    SCOPED_TRACE(static_cast<int>(encryption));
    if (encryption == Encryption::Aes256 && VESK_AES == 0) continue;
    const Options options = Options().setPassword("secret").setEncryption(encryption);
    ASSERT_TRUE(pack(Options(options).setExecutor(runOnThreads, 2)));
    std::filesystem::remove_all(out_);
    const Archive archive = openArchive();
    EXPECT_TRUE(archive.unpack(archive.entries(), out_.c_str(), options));
    shell("diff -r in out");
  }
}

TEST_F(HostExecutor, InsertedEntriesAreTheSame) {
  ASSERT_TRUE(insert({}));
  const auto expected = entriesOf(path_);
  const std::string names = output("unzip -Z1 a.zip");
  // A new archive, and one whose entries are all replaced.
  for (const bool isNew : {true, false}) {
    if (isNew) std::filesystem::remove(path_);
    ASSERT_TRUE(insert(Options().setExecutor(runOnThreads, 2)));
    EXPECT_TRUE(entriesOf(path_) == expected);
    EXPECT_EQ(output("unzip -Z1 a.zip"), names);
  }
}

// Callbacks come in the same order with the same numbers, on the thread of the call, and never while
// tasks run.
TEST_F(HostExecutor, CallbacksRunOnTheCallingThread) {
  using Calls = std::vector<std::pair<std::string, std::uint64_t>>;
  const std::thread::id caller = std::this_thread::get_id();
  bool isRunning = false;
  std::size_t most = 0;
  const auto callsWith = [&](unsigned int workers) {
    Calls calls;
    Options options;
    options.setProgress([&](const Progress& progress) {
      EXPECT_EQ(std::this_thread::get_id(), caller);
      EXPECT_FALSE(isRunning);
      calls.emplace_back(progress.name, progress.bytesDone);
      return true;
    });
    options.setExecutor(
        [&](const std::vector<Task>& tasks) {
          EXPECT_EQ(std::this_thread::get_id(), caller);
          isRunning = true;
          most = std::max(most, tasks.size());
          runOnThreads(tasks);
          isRunning = false;
        },
        workers);
    EXPECT_TRUE(pack(options));
    return calls;
  };
  const Calls expected = callsWith(1);
  EXPECT_EQ(most, 0U);
  EXPECT_EQ(callsWith(3), expected);
  EXPECT_EQ(most, 3U);
}

// Files that are listed and change before a task reads them.
TEST_F(HostExecutor, FilesThatChangeMeanwhile) {
  const std::string changed = folder_.file("in/small/77");
  const auto whenRun = [&](const std::function<void()>& change) {
    return Options().setExecutor(
        [change](const std::vector<Task>& tasks) {
          change();
          runOnThreads(tasks);
        },
        2);
  };
  ASSERT_TRUE(pack({}));
  const std::string before = support::readFile(path_);
  const Report report = pack(whenRun([&] { std::filesystem::remove(changed); }));
  EXPECT_EQ(reasonsOf(report), (Reasons{{"small\\77", Reason::Missing}}));
  EXPECT_TRUE(support::readFile(path_) == before);

  support::writeFile(changed, "short");
  const std::string grown = textOf(kPart + 1);
  ASSERT_TRUE(pack(whenRun([&] { support::writeFile(changed, grown); })));
  EXPECT_TRUE(contentOf("small\\77") == grown);
}

// As one that cannot start its threads, at each of its calls, before or after the tasks.
TEST_F(HostExecutor, ItsExceptionLeavesTheOldArchive) {
  // A new archive has no older one that stays.
  const std::tuple<const char*, bool, std::function<Report(const Options&)>> rows[] = {
      {"pack", true, [&](const Options& options) { return pack(options); }},
      {"pack over an archive", false, [&](const Options& options) { return pack(options); }},
      {"append", true, [&](const Options& options) { return insert(options); }},
      {"replace", false, [&](const Options& options) { return insert(options); }},
  };
  for (const char* name : {"in/noise", "in/part and a byte"}) {
    std::filesystem::remove(folder_.file(name));
  }
  for (const auto& [name, isNew, call] : rows) {
    for (const bool isAfter : {false, true}) {
      std::filesystem::remove(path_);
      if (!isNew) make({"bytes"});
      const std::string before = support::readFile(path_);
      const std::size_t files = folder_.entries();
      bool isThrown = true;
      for (int last = 1; isThrown; ++last) {
        SCOPED_TRACE(std::string(name) + " at call " + std::to_string(last));
        int count = 0;
        const auto executor = [&](const std::vector<Task>& tasks) {
          const bool throws = ++count == last;
          if (throws && !isAfter) throw Stop();
          runInReverse(tasks);
          if (throws) throw Stop();
        };
        isThrown = false;
        try {
          EXPECT_TRUE(call(Options().setExecutor(executor, 2)));
        } catch (const Stop&) {
          isThrown = true;
          EXPECT_TRUE(support::readFile(path_) == before);
          EXPECT_EQ(folder_.entries(), files);
        }
        EXPECT_EQ(isThrown, count == last);
        EXPECT_TRUE(isThrown || last > 2) << last;
      }
    }
  }
}

TEST(HostWorkers, HaveAtLeastOneAndALimit) {
  EXPECT_EQ(Options().workers(), 1U);
  EXPECT_FALSE(Options().executor());
  const std::pair<unsigned int, unsigned int> rows[] = {{0, 1}, {2, 2}, {256, 256}, {~0U, 256}};
  for (const auto& [asked, expected] : rows) {
    EXPECT_EQ(Options().setExecutor(runInReverse, asked).workers(), expected);
  }
}

}  // namespace
