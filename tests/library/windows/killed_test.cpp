// A process that is killed while it changes an archive or a file.

#include <filesystem/zip.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <random>
#include <string>

#include "library/zip.h"
#include "platform/unique_handle.h"
#include "support/noise.h"

namespace {

// The operation of a worker and its folder are in its environment.
constexpr char kOperationVariable[] = "VESK_KILLED_OPERATION";
constexpr char kFolderVariable[] = "VESK_KILLED_FOLDER";

using In = const std::string&;  // the folder of the operation

ZipArchive opened(In folder, unsigned int access) {
  ZipArchive archive;
  archive.open((folder + "a.zip").c_str(), access);
  return archive;
}

bool inserts(In folder, const char* name) {
  const Bytes bytes = bytesOf(support::noise(300'000, 2));
  return opened(folder, kReadWrite).insert(bytes, name, "", 1) == 1;
}

bool packs(In folder) {
  return FRT_ZIP_FOLDER((folder + "in").c_str(), (folder + "pack.zip").c_str());
}

const struct {
  const char* name;
  bool (*run)(In folder);
} kOperations[] = {
    {"append", [](In in) { return inserts(in, "new"); }},
    {"replace", [](In in) { return inserts(in, "old"); }},
    {"remove", [](In in) { return opened(in, kReadWrite).remove("old") == 1; }},
    {"pack", packs},
    {"extract", [](In in) { return opened(in, kRead).extract("old", (in + "file").c_str()) == 1; }},
};

void prepare(In folder) {
  support::writeFile(folder + "file", "old");
  support::writeFile(folder + "in\\1", "old");
  ASSERT_TRUE(packs(folder));
  for (const char* name : {"in\\1", "in\\2"}) {
    support::writeFile(folder + name, support::noise(500'000));
  }
  ZipArchive archive;
  ASSERT_EQ(archive.create((folder + "a.zip").c_str(), 1), 1);
  // The larger the archive, the longer a rewrite takes.
  ASSERT_EQ(archive.insert(bytesOf(support::noise(30'000'000)), "kept", "", 0), 1);
  ASSERT_EQ(archive.insert(bytesOf(support::noise(300'000)), "old", "", 0), 1);
}

// Restores the files of an operation. What a killed process has left beside them stays.
void restore(In model, In folder) {
  for (const auto& item : std::filesystem::recursive_directory_iterator(model)) {
    if (item.is_directory()) continue;
    const std::string name = item.path().string().substr(model.size());
    support::writeFile(folder + name, support::readFile(item.path().string()));
  }
}

// The content of the file, and that of each entry of the archives.
using State = std::map<std::string, std::string>;

State stateOf(In folder) {
  State state{{"file", support::readFile(folder + "file")}};
  for (const std::string zip : {"a.zip", "pack.zip"}) {
    for (const auto& [name, content] : entriesOf(folder + zip)) state[zip + ' ' + name] = content;
  }
  return state;
}

// Changes with every write to a file in the folder, and with every new one.
std::uint64_t traceOf(In folder) {
  std::uint64_t result = 0;
  WIN32_FIND_DATAA found = {};
  const platform::SearchHandle search(FindFirstFileA((folder + "*").c_str(), &found));
  if (!search) return result;
  do {
    result += std::hash<std::string>{}(found.cFileName) + found.nFileSizeLow +
              found.ftLastWriteTime.dwLowDateTime;
  } while (FindNextFileA(search.get(), &found) != 0);
  return result;
}

// This program again, which runs one operation.
class Worker {
 public:
  Worker(std::size_t operation, In folder) {
    SetEnvironmentVariableA(kOperationVariable, std::to_string(operation).c_str());
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
    SetEnvironmentVariableA(kOperationVariable, nullptr);
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

// VESK_KILLS in the environment sets the number of kills.
TEST(Killed, LosesNothing) {
  const char* const ofWorker = std::getenv(kOperationVariable);
  if (ofWorker != nullptr) {
    std::_Exit(kOperations[std::atoi(ofWorker)].run(std::getenv(kFolderVariable)) ? 0 : 1);
  }

  const char* const wanted = std::getenv("VESK_KILLS");
  const int kills = wanted != nullptr ? std::atoi(wanted) : 10;
  std::minstd_rand random(1);
  const support::TemporaryFolder folder;
  const std::string model = folder.text() + "model\\";
  const std::string work = folder.text() + "work\\";
  prepare(model);
  const State before = stateOf(model);
  for (int killed = 0; killed < kills; ++killed) {
    const std::size_t number = static_cast<std::size_t>(killed) % std::size(kOperations);
    SCOPED_TRACE(testing::Message() << kOperations[number].name << ", kill " << killed);
    restore(model, work);
    ASSERT_TRUE(kOperations[number].run(work));
    const State after = stateOf(work);
    restore(model, work);
    const std::uint64_t trace = traceOf(work);
    bool hasEnded = false;
    {
      const Worker worker(number, work);
      while (traceOf(work) == trace && !worker.ended(0)) {
      }
      ASSERT_NE(traceOf(work), trace);
      hasEnded = worker.ended(random() % static_cast<unsigned>(std::min(5 * killed, 150) + 1));
    }
    const State found = stateOf(work);
    EXPECT_TRUE(found == after || (!hasEnded && found == before));
  }
}

}  // namespace
