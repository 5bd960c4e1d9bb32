// A process that changes archives and a file and is killed while it does so.

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <random>

#include "library/zip.h"
#include "support/noise.h"

namespace {

// The folder of a worker is in its environment.
constexpr char kFolderVariable[] = "VESK_KILLED_FOLDER";

using Files = std::map<std::string, std::string>;

// The archive and the extracted file. The steps that change them are the same for each number.
struct State {
  Files entries;
  std::string extracted;

  bool operator==(const State&) const = default;
};

enum class Kind { Append, Replace, Remove, Pack, Extract, Count };

Kind kindOf(unsigned step) { return static_cast<Kind>(step % static_cast<unsigned>(Kind::Count)); }

std::string contentOf(unsigned step) { return support::noise(300'000, step + 1); }

void apply(unsigned step, State& state) {
  switch (kindOf(step)) {
    case Kind::Append:
      state.entries["added"] = contentOf(step);
      break;
    case Kind::Replace:
      state.entries["replaced"] = contentOf(step);
      break;
    case Kind::Remove:
      state.entries.erase("added");
      break;
    case Kind::Extract:
      state.extracted = state.entries["replaced"];
      break;
    default:
      break;
  }
}

// The files of a worker.
class Workplace {
 public:
  explicit Workplace(std::string folder) : folder_(std::move(folder)) {}

  // Creates the files, and returns their state.
  State prepare() const {
    support::writeFile(extracted_, "old");
    for (const char* name : {"in\\1", "in\\2"}) support::writeFile(folder_ + name, packed_);
    EXPECT_TRUE(FRT_ZIP_FOLDER((folder_ + "in").c_str(), pack_.c_str()));
    ZipArchive archive;
    EXPECT_EQ(archive.create(archive_.c_str(), 1), 1);
    // The larger the archive, the longer a rewrite takes.
    const std::string kept = support::noise(30'000'000);
    EXPECT_EQ(archive.insert(bytesOf(kept), "kept", "", 0), 1);
    EXPECT_EQ(archive.insert(bytesOf("old"), "replaced", "", 0), 1);
    return {.entries = {{"kept", kept}, {"replaced", "old"}}, .extracted = "old"};
  }

  bool run(unsigned step) const {
    if (kindOf(step) == Kind::Pack) return FRT_ZIP_FOLDER((folder_ + "in").c_str(), pack_.c_str());
    ZipArchive archive;
    if (archive.open(archive_.c_str(), kReadWrite) == 0) return false;
    switch (kindOf(step)) {
      case Kind::Append:
        return archive.insert(bytesOf(contentOf(step)), "added", "", 1) == 1;
      case Kind::Replace:
        return archive.insert(bytesOf(contentOf(step)), "replaced", "", 1) == 1;
      // A killed process may have removed it.
      case Kind::Remove:
        return archive.remove("added") == 1 || archive.exist("added") == 0;
      default:
        return archive.extract("replaced", extracted_.c_str()) == 1;
    }
  }

  State state() const {
    return {.entries = entriesOf(archive_), .extracted = support::readFile(extracted_)};
  }
  Files pack() const { return entriesOf(pack_); }
  Files wholePack() const { return {{"1", packed_}, {"2", packed_}}; }
  // Changes with every write to the archives and the file, and with every file beside them.
  std::uint64_t trace() const {
    std::uint64_t result = 0;
    WIN32_FIND_DATAA found = {};
    const platform::SearchHandle search(FindFirstFileA((folder_ + "work\\*").c_str(), &found));
    if (!search) return result;
    do {
      result += std::hash<std::string>{}(found.cFileName) + found.nFileSizeLow +
                found.ftLastWriteTime.dwLowDateTime;
    } while (FindNextFileA(search.get(), &found) != 0);
    return result;
  }
  // The files beside them that are not temporary ones, which a later call deletes.
  std::string strangers() const {
    std::string result;
    for (const auto& entry : std::filesystem::directory_iterator(folder_ + "work")) {
      const std::string name = entry.path().filename().string();
      const bool isTemporary = name.starts_with("~za") && name.ends_with(".TMP");
      if (!isTemporary && name != "a.zip" && name != "pack.zip" && name != "file") result += name;
    }
    return result;
  }
  std::string progress() const { return folder_ + "progress"; }

 private:
  std::string folder_;
  std::string archive_ = folder_ + "work\\a.zip";
  std::string pack_ = folder_ + "work\\pack.zip";
  std::string extracted_ = folder_ + "work\\file";
  std::string packed_ = support::noise(500'000);
};

// Numbers of steps, in memory that two processes share.
class Progress {
 public:
  struct Numbers {
    std::atomic<unsigned> next{0};  // begun, if a process is at work
    std::atomic<unsigned> returned{0};
  };

  explicit Progress(const std::string& path)
      : file_(support::openFile(path, GENERIC_READ | GENERIC_WRITE,
                                FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_ALWAYS)),
        mapping_(
            CreateFileMappingA(file_.get(), nullptr, PAGE_READWRITE, 0, sizeof(Numbers), nullptr)),
        numbers_(static_cast<Numbers*>(
            MapViewOfFile(mapping_.get(), FILE_MAP_ALL_ACCESS, 0, 0, sizeof(Numbers)))) {}
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { UnmapViewOfFile(numbers_); }

  Numbers* operator->() const { return numbers_; }

 private:
  platform::FileHandle file_;
  platform::FileHandle mapping_;
  Numbers* numbers_;
};

// Takes one step after the other, at most as many as one process is given time for.
int work(const std::string& folder) {
  const Workplace workplace(folder);
  const Progress progress(workplace.progress());
  for (unsigned count = 0; count < 1000; ++count) {
    const unsigned step = progress->next++;
    if (!workplace.run(step)) return 1;
    progress->returned = step + 1;
  }
  return 0;
}

// This program again, as a worker.
class Worker {
 public:
  explicit Worker(const std::string& folder) {
    SetEnvironmentVariableA(kFolderVariable, folder.c_str());
    char program[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, program, sizeof program);
    std::string line = '"' + std::string(program) + "\" --gtest_filter=Killed.LosesNothing";
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    PROCESS_INFORMATION process{};
    CreateProcessA(program, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                   &process);
    SetEnvironmentVariableA(kFolderVariable, nullptr);
    process_.reset(process.hProcess);
    thread_.reset(process.hThread);
  }
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;
  ~Worker() {
    TerminateProcess(process_.get(), 0);
    WaitForSingleObject(process_.get(), INFINITE);
  }

  bool ended(DWORD milliseconds) const {
    return WaitForSingleObject(process_.get(), milliseconds) != WAIT_TIMEOUT;
  }

 private:
  platform::FileHandle process_;
  platform::FileHandle thread_;
};

// Waits until a step of this kind has made its first change, and for some milliseconds more.
void waitForChange(const Workplace& workplace, const Progress& progress, const Worker& worker,
                   Kind kind, DWORD milliseconds) {
  const unsigned first = progress->returned;
  while (progress->next == first || kindOf(progress->next - 1) != kind) {
    ASSERT_FALSE(worker.ended(1)) << "step " << progress->returned;
  }
  const std::uint64_t before = workplace.trace();
  while (workplace.trace() == before) ASSERT_FALSE(worker.ended(0));
  ASSERT_FALSE(worker.ended(milliseconds));
}

// VESK_KILLS in the environment sets the number of kills.
TEST(Killed, LosesNothing) {
  const char* const folderOfWorker = std::getenv(kFolderVariable);
  if (folderOfWorker != nullptr) std::_Exit(work(folderOfWorker));

  const char* const wanted = std::getenv("VESK_KILLS");
  const int kills = wanted != nullptr ? std::atoi(wanted) : 10;
  std::minstd_rand random(1);
  const support::TemporaryFolder folder;
  const Workplace workplace(folder.text());
  const Progress progress(workplace.progress());
  State expected = workplace.prepare();
  unsigned done = 0;
  int losses = 0;
  for (int killed = 0; killed < kills; ++killed) {
    progress->next = progress->returned = done;
    {
      const Worker worker(folder.text());
      const unsigned longest = std::min(5U * static_cast<unsigned>(killed), 150U);
      waitForChange(workplace, progress, worker, kindOf(static_cast<unsigned>(killed)),
                    random() % (longest + 1));
    }
    ASSERT_FALSE(HasFatalFailure());
    for (; done < progress->returned; ++done) apply(done, expected);
    const State found = workplace.state();
    if (done < progress->next && found != expected) apply(done++, expected);
    if (found != expected || workplace.pack() != workplace.wholePack()) {
      ++losses;
      expected = workplace.prepare();
    }
  }
  EXPECT_EQ(workplace.strangers(), "");
  EXPECT_EQ(losses, 0) << "of " << kills << " kills, " << done << " steps";
}

}  // namespace
