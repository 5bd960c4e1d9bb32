// The state of the disk after a power failure at any moment of each operation.

#include <filesystem/zip_archive.h>

#include <iostream>
#include <utility>

#include "operations.h"
#include "power_loss.h"
#include "support/programs.h"
#include "support/sanitized.h"
#include "support/temporary_folder.h"

namespace {

using operations::contentsOf;
using operations::Files;
using operations::Operation;
using power_loss::LostBlocks;
using power_loss::Moment;
using power_loss::State;

// Archives that are also appended to and read by another program.
constexpr int kShown = support::kSanitized ? 10 : 40;

// States between two commits that are visited.
std::size_t statesOf(const Operation& operation) {
  if (operation.is(operations::kLarge)) return 5;
  return support::kSanitized ? 15 : 300;
}

// Returns the bytes of an archive before its directory.
std::string entryBytesOf(const std::string& archive) {
  return archive.substr(0, archive.find("PK\1\2"));
}

class PowerLoss : public testing::TestWithParam<Operation> {
 protected:
  enum class Version { New, Old, Refused, Damaged };

  PowerLoss() {
    std::filesystem::create_directory(work_);
    std::filesystem::create_directory(shown_);
    operations::prepare(work_, GetParam());
    before_ = contentsOf(work_, true);
    entryBytes_ = entryBytesOf(support::readFile(work_ + "a.zip"));
  }

  std::vector<recording::Event> record() {
    const recording::Recorder recorder(work_);
    EXPECT_TRUE(GetParam().run(work_));
    return recorder.events();
  }

  // Compares a file with those before and after the operation. What is copied or extracted to a new
  // name may be incomplete.
  Version versionOf(const std::string& name, const std::string& bytes) {
    if (before_.count(name) == 0 && !name.ends_with(".zip")) return Version::New;
    const std::string folder = folder_.file("disk/");
    support::writeFile(folder + name, bytes);
    const std::string content = contentsOf(folder, true)[name];
    const auto is = [&](const Files& files) {
      const auto file = files.find(name);
      return file != files.end() && file->second == content;
    };
    const Version version = is(after_)    ? Version::New
                            : is(before_) ? Version::Old
                                          : Version::Damaged;
    if (version != Version::Damaged && name.ends_with(".zip") && !bytes.empty()) {
      show(folder + name);
    }
    std::filesystem::remove_all(folder);
    const bool isRefused = version == Version::Damaged && content == "<no archive>=\n";
    return isRefused && bytes.starts_with(entryBytes_) ? Version::Refused : version;
  }

  // Puts the archive after a further insertion before another program.
  void show(const std::string& path) {
    if (shownCount_ == kShown) return;
    ZipArchive archive;
    std::vector<std::string> names;
    ASSERT_EQ(archive.open(path.c_str(), 0xC0000000), 1);
    ASSERT_EQ(archive.insert({'x'}, "another", "", 0), 1);
    archive.enumerate(names);
    archive.close();
    std::filesystem::rename(path, shown_ + std::to_string(shownCount_++) + ".zip");
    expected_ += std::to_string(names.size()) + "\n";
  }

  // Checks all states of the operation. `mayRefuse` is whether an archive may be refused during the
  // call, if it has the bytes of all its entries.
  void checkStates(LostBlocks lost, bool mayRefuse) {
    const std::vector<recording::Event> events = record();
    after_ = contentsOf(work_, true);
    std::map<std::pair<std::string, std::size_t>, Version> known;  // by name and hash of the bytes
    std::map<std::string, int> problems;  // and the number of states that have them
    int states = 0;
    forEachState(events, lost, statesOf(GetParam()), [&](const State& state, Moment moment) {
      ++states;
      const bool hasReturned = moment == Moment::AfterTheReturn;
      for (const auto& [name, bytes] : state) {
        const auto [file, isNew] = known.try_emplace({name, std::hash<std::string>{}(bytes)});
        if (isNew) file->second = versionOf(name, bytes);
        const Version version = file->second;
        // The change of an archive is on the disk when the call returns, not that of another file.
        if (hasReturned && name.ends_with(".zip") && version != Version::New) {
          ++problems[name + " is not the new one after the return"];
        }
        if (version == Version::Damaged) ++problems[name + " is damaged"];
        if (version == Version::Refused && !mayRefuse) ++problems[name + " is refused"];
      }
      for (const auto& [name, content] : before_) {
        if (state.count(name) == 0) ++problems[name + " is missing"];
      }
      for (const auto& [name, content] : after_) {
        if (hasReturned && name.ends_with(".zip") && state.count(name) == 0) {
          ++problems[name + " is missing after the return"];
        }
      }
    });
    std::cout << states << " states\n";
    EXPECT_EQ(problems, (std::map<std::string, int>{})) << "of " << states << " states";
    // What changes an archive can be interrupted between its writes.
    if (before_["a.zip"] != after_["a.zip"]) {
      EXPECT_GT(states, 2);
    }
  }

  // Another program reads all of an archive after the next append.
  void checkShown() {
    EXPECT_EQ(support::outputOf(shown_, R"(python3 -c '
import glob, zipfile
for i in range(len(glob.glob("*.zip"))):
  z = zipfile.ZipFile(f"{i}.zip")
  print(z.testzip() or len(z.namelist()))')"),
              expected_);
  }

  support::TemporaryFolder folder_;
  std::string work_ = folder_.file("work/");
  std::string shown_ = folder_.file("shown/");
  Files before_;
  Files after_;
  std::string entryBytes_;
  int shownCount_ = 0;
  std::string expected_;
};

TEST_P(PowerLoss, LeavesTheOldOrTheNewState) {
  checkStates(LostBlocks::Zeros, false);
  checkShown();
}

TEST_P(PowerLoss, KeepsAllEntriesWhereLostBlocksShowOldContent) {
  checkStates(LostBlocks::Stale, true);
  checkShown();
}

INSTANTIATE_TEST_SUITE_P(All, PowerLoss, testing::ValuesIn(operations::all()),
                         testing::PrintToStringParamName());

}  // namespace
