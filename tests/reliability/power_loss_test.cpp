// The state of the disk after a power failure at any moment of each operation.

#include <filesystem/zip_archive.h>
#include <gtest/gtest.h>

#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "operations.h"
#include "power_loss.h"
#include "recorded_calls.h"
#include "support/programs.h"
#include "support/sanitized.h"
#include "support/temporary_folder.h"

namespace {

using operations::contentsOf;
using operations::Files;
using operations::Operation;

// States between two commits that are visited.
constexpr std::size_t kStates = support::kSanitized ? 50 : 300;
// Archives that are also appended to and read by another program.
constexpr int kShown = 40;

class PowerLoss : public testing::TestWithParam<Operation> {
 protected:
  PowerLoss() {
    std::filesystem::create_directory(work_);
    std::filesystem::create_directory(shown_);
    operations::prepare(work_, GetParam());
    before_ = contentsOf(work_, true);
  }

  std::vector<recording::Event> record() {
    const recording::Recorder recorder(work_);
    EXPECT_TRUE(GetParam().run(work_));
    return recorder.events();
  }

  // Reports whether a file is as before or after the operation. What is copied or extracted to a
  // new name may be incomplete.
  bool isWhole(const std::string& name, const std::string& bytes) {
    if (before_.count(name) == 0 && !name.ends_with(".zip")) return true;
    const std::string folder = folder_.file("disk/");
    support::writeFile(folder + name, bytes);
    const std::string content = contentsOf(folder, true)[name];
    const auto before = before_.find(name);
    const auto after = after_.find(name);
    const bool whole = (before != before_.end() && before->second == content) ||
                       (after != after_.end() && after->second == content);
    if (whole && name.ends_with(".zip") && !bytes.empty()) show(folder + name);
    std::filesystem::remove_all(folder);
    return whole;
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

  support::TemporaryFolder folder_;
  std::string work_ = folder_.file("work/");
  std::string shown_ = folder_.file("shown/");
  Files before_;
  Files after_;
  int shownCount_ = 0;
  std::string expected_;
};

TEST_P(PowerLoss, LeavesTheOldOrTheNewState) {
  if (GetParam().is(operations::kLarge)) GTEST_SKIP() << "takes minutes";
  const std::vector<recording::Event> events = record();
  after_ = contentsOf(work_, true);
  std::map<std::pair<std::string, std::size_t>, bool> known;  // by name and hash of the bytes
  int states = 0;
  int damaged = 0;
  power_loss::forEachState(events, kStates, [&](const power_loss::State& state) {
    bool whole = true;
    for (const auto& [name, bytes] : state) {
      const auto [file, isNew] = known.try_emplace({name, std::hash<std::string>{}(bytes)});
      if (isNew) file->second = isWhole(name, bytes);
      whole = whole && file->second;
    }
    for (const auto& file : before_) whole = whole && state.count(file.first) != 0;
    ++states;
    if (!whole) ++damaged;
  });
  std::cout << states << " states\n";
  EXPECT_EQ(damaged, 0) << "of " << states;
  // Another program reads all of an archive after the next append.
  EXPECT_EQ(support::outputOf(shown_, R"(python3 -c '
import glob, zipfile
for i in range(len(glob.glob("*.zip"))):
  z = zipfile.ZipFile(f"{i}.zip")
  print(z.testzip() or len(z.namelist()))')"),
            expected_);
}

INSTANTIATE_TEST_SUITE_P(All, PowerLoss,
                         testing::ValuesIn(operations::all().begin(), operations::all().end()),
                         testing::PrintToStringParamName());

}  // namespace
