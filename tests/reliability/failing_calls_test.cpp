// Every operation with each of its system calls failed in turn, and on a disk
// that is full from some call on.

#include <filesystem/enumeration.h>
#include <filesystem/file_stream.h>
#include <filesystem/files.h>
#include <filesystem/stream.h>
#include <filesystem/temporary_storage.h>
#include <filesystem/zip.h>
#include <filesystem/zip_archive.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>

#include <algorithm>
#include <functional>
#include <map>
#include <ostream>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "failing_calls.h"
#include "started_threads.h"
#include "support/linux/forked_process.h"
#include "support/linux/left_over.h"
#include "support/temporary_folder.h"

namespace {

using failing::Failing;
using failing::Fault;

constexpr unsigned int kRead = 0x80000000;
constexpr unsigned int kReadWrite = 0xC0000000;

const std::string kLarge(100000, 'l');

std::string textOf(const std::vector<unsigned char>& bytes) { return {bytes.begin(), bytes.end()}; }
std::vector<unsigned char> bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

// All files of a folder. With `entries` an archive counts by its entries, since
// its bytes hold the time.
std::map<std::string, std::string> look(const std::filesystem::path& folder, bool entries) {
  std::map<std::string, std::string> files;
  for (const auto& item : std::filesystem::recursive_directory_iterator(folder)) {
    if (!item.is_regular_file()) continue;
    const std::string path = item.path().string();
    files[path] = support::readFile(path);
    if (!entries || item.path().extension() != ".zip") continue;
    ZipArchive archive;
    std::vector<std::string> names;
    std::string content = "archive:";
    archive.open(path.c_str(), kRead);
    archive.enumerate(names);
    for (const std::string& name : names) {
      std::vector<unsigned char> bytes;
      archive.extract(name.c_str(), bytes);
      content += "\n" + name + "=" + textOf(bytes);
    }
    files[path] = content;
  }
  return files;
}

// Makes what the operations work on: an archive of two entries, a tree, and a
// copy of the tree with other content.
void prepare(const std::string& folder) {
  ZipArchive archive;
  ASSERT_EQ(archive.create((folder + "a.zip").c_str(), 0), 1);
  ASSERT_EQ(archive.insert(bytesOf("kept"), "kept", "", 0), 1);
  ASSERT_EQ(archive.insert(bytesOf(kLarge), "deep\\old", "", 0), 1);
  support::writeFile(folder + "in/small", "new");
  support::writeFile(folder + "in/deep/large", kLarge);
  support::writeFile(folder + "out/small", "old");
  support::writeFile(folder + "out/deep/large", "old");
  support::writeFile(folder + "out/deep/old", "old");
}

// Adds an archive whose directory fills pages.
void prepareMany(const std::string& folder) {
  ZipArchive many;
  ASSERT_EQ(many.create((folder + "many.zip").c_str(), 0), 1);
  for (int i = 0; i < 20; ++i) {
    ASSERT_EQ(many.insert(bytesOf("m"), std::to_string(i) + std::string(200, 'n'), "", 0), 1);
  }
}

ZipArchive opened(const std::string& folder, unsigned int access) {
  ZipArchive archive;
  archive.open((folder + "a.zip").c_str(), access);
  return archive;
}

struct Operation {
  const char* name;
  // The folder ends in a separator. True for success.
  std::function<bool(const std::string& folder)> run;
  // Some of the files may have been done already when one fails, each whole.
  bool inParts = false;
  // What cannot be listed or read is passed over and is no failure.
  bool passesOver = false;
};

void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }

const Operation kOperations[] = {
    {"insert",
     [](const std::string& folder) {
       return opened(folder, kReadWrite).insert(bytesOf(kLarge), "new", "", 0) == 1;
     }},
    {"insert a file",
     [](const std::string& folder) {
       return opened(folder, kReadWrite)
                  .insert((folder + "in/deep/large").c_str(), "new", nullptr, 0) == 1;
     }},
    {"insert into many",
     [](const std::string& folder) {
       ZipArchive archive;
       archive.open((folder + "many.zip").c_str(), kReadWrite);
       return archive.insert(bytesOf("x"), "new", "", 0) == 1;
     }},
    {"replace",
     [](const std::string& folder) {
       return opened(folder, kReadWrite).insert(bytesOf("newer"), "deep\\old", "", 1) == 1;
     }},
    {"remove",
     [](const std::string& folder) { return opened(folder, kReadWrite).remove("kept") == 1; }},
    {"create",
     [](const std::string& folder) {
       return ZipArchive().create((folder + "b.zip").c_str(), 0) == 1;
     },
     true},
    {"list",
     [](const std::string& folder) {
       std::vector<std::string> names;
       return opened(folder, kRead).enumerate(names) == 1 && names.size() == 2;
     }},
    {"extract to memory",
     [](const std::string& folder) {
       std::vector<unsigned char> bytes;
       return opened(folder, kRead).extract("deep\\old", bytes) == 1 && textOf(bytes) == kLarge;
     }},
    {"extract to a new file",
     [](const std::string& folder) {
       return opened(folder, kRead).extract("deep\\old", (folder + "new/file").c_str()) == 1;
     }},
    {"extract over a file",
     [](const std::string& folder) {
       return opened(folder, kRead).extract("deep\\old", (folder + "out/small").c_str()) == 1;
     }},
    {"unpack",
     [](const std::string& folder) {
       return FRT_UNZIP_FILE((folder + "a.zip").c_str(), (folder + "out").c_str());
     },
     true, true},
    {"pack",
     [](const std::string& folder) {
       return FRT_ZIP_FOLDER((folder + "in").c_str(), (folder + "b.zip").c_str());
     },
     true, true},
    {"copy over files",
     [](const std::string& folder) {
       return FileSystem::CopyContent(folder + "in/", folder + "out/") == 2;
     },
     true},
    {"copy to new files",
     [](const std::string& folder) {
       return FileSystem::CopyContent(folder + "in/", folder + "new/") == 2;
     },
     true},
    {"copy a file",
     [](const std::string& folder) {
       return FileSystem::CopyFileA((folder + "in/small").c_str(), (folder + "out/").c_str(), 0) !=
              0;
     }},
    {"make folders",
     [](const std::string& folder) {
       return FileSystem::EnsurePathExists((folder + "x/y/z").c_str()) != 0;
     }},
    {"read a file",
     [](const std::string& folder) {
       return FileSystem::readContent(folder + "in/deep/large") == kLarge;
     }},
    {"probe",
     [](const std::string& folder) {
       const std::string path = folder + "in/small";
       return FileSystem::FileExists(path.c_str()) != 0 &&
              FileSystem::AllowedAccess(path.c_str()) == kReadWrite &&
              FileSystem::IsValidPath(folder.c_str()) != 0;
     }},
    {"list a tree",
     [](const std::string& folder) {
       std::vector<std::string> files;
       return FileSystem::EnumFilesWithPath(files, folder.c_str(), "*", true) == 6;
     }},
    {"temporary storage",
     [](const std::string& folder) {
       FileSystem::TemporaryStorage storage;
       return storage.create(folder.substr(0, folder.size() - 1), false) &&
              FileSystem::writeContent(storage.path() + "file", "content");
     },
     true, true},
    {"lock file",
     [](const std::string& folder) {
       return FileSystem::CreateLockFile(folder.c_str()) != 0 &&
              FileSystem::DeleteLockFile(folder.c_str()) != 0;
     }},
};

std::set<std::string> linesOf(const std::string& text) {
  std::set<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.insert(line);
  return lines;
}

// Whether each file is as in one of two states, or an archive that has some of
// the entries of the second.
bool isBetween(const std::map<std::string, std::string>& now,
               const std::map<std::string, std::string>& before,
               const std::map<std::string, std::string>& after) {
  for (const auto& [path, content] : now) {
    const auto old = before.find(path);
    const auto done = after.find(path);
    if (old != before.end() && old->second == content) continue;
    if (done == after.end()) return false;
    const std::set<std::string> all = linesOf(done->second);
    const std::set<std::string> some = linesOf(content);
    const bool isPart =
        path.ends_with(".zip") && std::includes(all.begin(), all.end(), some.begin(), some.end());
    if (!isPart && done->second != content) return false;
  }
  return std::all_of(before.begin(), before.end(),
                     [&](const auto& file) { return now.count(file.first) != 0; });
}

class FailingCalls : public testing::TestWithParam<Operation> {
 protected:
  FailingCalls() {
    std::filesystem::create_directory(temporary_);
    std::filesystem::create_directory(model_);
    prepare(model_);
    if (std::string(GetParam().name) == "insert into many") prepareMany(model_);
    setenv("TMPDIR", temporary_.c_str(), 1);
  }
  ~FailingCalls() override { unsetenv("TMPDIR"); }

  // The same path for each run.
  void prepareAnew() {
    std::filesystem::remove_all(work_);
    std::filesystem::copy(model_, work_, std::filesystem::copy_options::recursive);
  }

  support::TemporaryFolder folder_;
  std::string temporary_ = folder_.file("tmp");
  std::string model_ = folder_.file("model/");
  std::string work_ = folder_.file("work/");
};

// A file that is left because of all calls the one failed that was to remove it.
bool removalFailed(const std::string& call) {
  return call.starts_with("unlink ") || call.starts_with("lstat ") || call.starts_with("rmdir ");
}

TEST_P(FailingCalls, SucceedOrLeaveAllAsItWas) {
  constexpr struct {
    Fault fault;
    const char* name;
  } kFaults[] = {{Fault::OneCall, "call "},
                 {Fault::FullDisk, "full disk from call "},
                 {Fault::HalfRead, "half of read "}};
  const Operation& operation = GetParam();
  prepareAnew();
  const auto beforeBytes = look(work_, false);
  const auto before = look(work_, true);
  std::map<Fault, int> total;
  const int threads = startedThreads();
  for (const auto& [fault, name] : kFaults) {
    prepareAnew();
    const Failing counter(fault, 0);
    ASSERT_TRUE(operation.run(work_));
    total[fault] = counter.count();
  }
  const auto after = look(work_, true);
  EXPECT_GT(total[Fault::OneCall], 3);
  EXPECT_EQ(startedThreads(), threads);

  for (const auto& [fault, name] : kFaults) {
    for (int number = 1; number <= total[fault]; ++number) {
      prepareAnew();
      const auto descriptors = support::openDescriptors();
      bool success = false;
      std::string failed;
      {
        const Failing failing(fault, number);
        success = operation.run(work_);
        failed = failing.failed();
      }
      SCOPED_TRACE(name + std::to_string(number) + ": " + failed +
                   (success ? ", success" : ", failure"));
      EXPECT_EQ(support::openDescriptors(), descriptors);
      if (fault == Fault::OneCall && removalFailed(failed)) {
        for (const auto& item : std::filesystem::directory_iterator(temporary_)) {
          std::filesystem::remove(item.path());
        }
        continue;
      }
      EXPECT_TRUE(std::filesystem::is_empty(temporary_));
      auto now = look(work_, true);
      // What a storage cannot list it cannot clear.
      if (operation.passesOver && success) {
        std::erase_if(now,
                      [](const auto& file) { return file.first.find("/{") != file.first.npos; });
      }
      if (success && !operation.passesOver) {
        EXPECT_TRUE(now == after);
      } else if (operation.inParts) {
        EXPECT_TRUE(isBetween(now, before, after));
      } else {
        EXPECT_TRUE(now == before);
        if (fault == Fault::OneCall) {
          EXPECT_TRUE(look(work_, false) == beforeBytes);
        }
      }
    }
  }
}

TEST_P(FailingCalls, KilledInFrontOfAnyCallLeaveAllWhole) {
  const Operation& operation = GetParam();
  prepareAnew();
  const auto before = look(work_, true);
  int total = 0;
  {
    const Failing counter(Fault::Kill, 0);
    ASSERT_TRUE(operation.run(work_));
    total = counter.count();
  }
  const auto after = look(work_, true);
  if (after == before) return;  // it only reads
  // Starting a process under a sanitizer takes long, so there only some are.
  constexpr int kStep = sizeof(VESK_SANITIZE) > 1 ? 10 : 1;
  for (int number = 1; number <= total; number += kStep) {
    prepareAnew();
    support::ForkedProcess process([&](const auto&) {
      const Failing failing(Fault::Kill, number);
      return operation.run(work_) ? 0 : 1;
    });
    EXPECT_EQ(process.wait(), -1) << "call " << number;
    // Files of new names are whole only at the end.
    const auto now = look(work_, true);
    for (const auto& [path, content] : before) {
      const auto file = now.find(path);
      EXPECT_TRUE(file != now.end() && (file->second == content || file->second == after.at(path)))
          << "call " << number << ' ' << path;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, FailingCalls, testing::ValuesIn(kOperations), [](const auto& info) {
  std::string name = info.param.name;
  for (char& c : name) c = c == ' ' ? '_' : c;
  return name;
});

// On a file system of 400 KiB, in a process that has mounts of its own. What the
// child gives is the line of the first promise that did not hold.
TEST(FullDisk, ArchivesAndTargetsStayAsTheyWere) {
  constexpr int kNotAllowed = 255;
  support::TemporaryFolder folder;
  const std::string disk = folder.file("disk/");
  std::filesystem::create_directory(disk);
  support::writeFile(folder.file("in/small"), kLarge + kLarge);
  std::string noise(60000, '\0');
  std::minstd_rand random(1);
  for (char& c : noise) c = static_cast<char>(random() >> 8);
  const auto work = [&]() -> int {
    if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", "none", MS_REC | MS_PRIVATE, "") != 0 ||
        mount("vesk", disk.c_str(), "tmpfs", 0, "size=400k") != 0) {
      return kNotAllowed;
    }
    const std::string path = disk + "a.zip";
    std::ofstream(disk + "small") << "old";
    ZipArchive archive;
    if (archive.create(path.c_str(), 0) == 0) return __LINE__ % 250;
    int count = 0;
    std::string before;
    for (bool room = true; room;) {
      archive.close();
      before = support::readFile(path);
      archive.open(path.c_str(), kReadWrite);
      room = archive.insert(bytesOf(noise), std::to_string(count), "", 0) == 1;
      if (room) ++count;
    }
    archive.close();
    if (count < 3 || support::readFile(path) != before) return __LINE__ % 250;
    archive.open(path.c_str(), kReadWrite);
    // With the temporary folder on the same disk, and on another one.
    for (const std::string& temporary : {disk, folder.text()}) {
      setenv("TMPDIR", temporary.c_str(), 1);
      if (archive.extract("0", (disk + "small").c_str()) != 0) return __LINE__ % 250;
      if (archive.insert(bytesOf(noise), "0", "", 1) != 0) return __LINE__ % 250;
      if (FileSystem::CopyContent(folder.file("in") + "/", disk) != 0) return __LINE__ % 250;
      if (support::readFile(disk + "small") != "old") return __LINE__ % 250;
    }
    archive.close();
    if (support::readFile(path) != before) return __LINE__ % 250;
    for (const auto& item : std::filesystem::directory_iterator(disk)) {
      const std::string name = item.path().filename().string();
      if (name != "a.zip" && name != "small") return __LINE__ % 250;
    }
    return 0;
  };
  support::ForkedProcess process([&](const auto&) { return work(); });
  const int status = process.wait();
  if (status == kNotAllowed) GTEST_SKIP() << "mounting a file system is not allowed here";
  EXPECT_EQ(status, 0);
}

}  // namespace
