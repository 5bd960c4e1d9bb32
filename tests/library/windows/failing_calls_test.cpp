// The order in which the library commits and renames, and calls that write and fail.

#include <filesystem/archive_change.h>
#include <filesystem/zip.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <map>
#include <ostream>
#include <set>
#include <string>

#include "library/windows/imports.h"
#include "library/zip.h"
#include "support/noise.h"

namespace {

// What the calls of an operation have done.
struct Calls {
  unsigned made = 0;
  unsigned failing = 0;  // the number of the call that fails, from 1; 0 for none
  std::map<HANDLE, std::string> opened;
  std::set<std::string> uncommitted;  // files with bytes or attributes that are not flushed
  std::string renamed;                // files that were renamed uncommitted
  unsigned renames = 0;
};

Calls calls;

// Counts a call, and reports whether it fails.
bool fails() {
  if (++calls.made != calls.failing) return false;
  SetLastError(ERROR_IO_DEVICE);
  return true;
}

HANDLE WINAPI createFile(const char* name, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                         DWORD disposition, DWORD flags, HANDLE like) {
  if ((access & GENERIC_WRITE) != 0 && fails()) return INVALID_HANDLE_VALUE;
  const HANDLE file = CreateFileA(name, access, share, security, disposition, flags, like);
  const DWORD error = GetLastError();
  if (file != INVALID_HANDLE_VALUE) calls.opened[file] = name;
  SetLastError(error);
  return file;
}

BOOL WINAPI writeFile(HANDLE file, const void* bytes, DWORD size, DWORD* written, OVERLAPPED* at) {
  calls.uncommitted.insert(calls.opened[file]);
  if (fails()) return FALSE;
  return WriteFile(file, bytes, size, written, at);
}

BOOL WINAPI setEndOfFile(HANDLE file) {
  calls.uncommitted.insert(calls.opened[file]);
  return fails() ? FALSE : SetEndOfFile(file);
}

BOOL WINAPI setInformation(HANDLE file, FILE_INFO_BY_HANDLE_CLASS kind, void* value, DWORD size) {
  calls.uncommitted.insert(calls.opened[file]);
  return fails() ? FALSE : SetFileInformationByHandle(file, kind, value, size);
}

BOOL WINAPI flushFile(HANDLE file) {
  if (fails()) return FALSE;
  calls.uncommitted.erase(calls.opened[file]);
  return FlushFileBuffers(file);
}

BOOL WINAPI moveFile(const char* from, const char* to, DWORD flags) {
  if (fails()) return FALSE;
  ++calls.renames;
  if (calls.uncommitted.erase(from) != 0 || (flags & MOVEFILE_WRITE_THROUGH) == 0) {
    calls.renamed += std::string(from) + " ";
  }
  return MoveFileExA(from, to, flags);
}

// The library's calls go through the functions above.
class ObservedCalls {
 public:
  explicit ObservedCalls(unsigned failing) {
    calls = {};
    calls.failing = failing;
    imports_.replace("CreateFileA", createFile);
    imports_.replace("WriteFile", writeFile);
    imports_.replace("SetEndOfFile", setEndOfFile);
    imports_.replace("SetFileInformationByHandle", setInformation);
    imports_.replace("FlushFileBuffers", flushFile);
    imports_.replace("MoveFileExA", moveFile);
  }

 private:
  ReplacedImports imports_;
};

using Files = std::map<std::string, std::string>;

// Returns a text, or the number that stands for a long one in messages.
std::string shortened(const std::string& text) {
  return text.size() < 100 ? text : std::to_string(std::hash<std::string>{}(text));
}

// Contents by relative path; those of archives by entry, since their bytes include the time.
Files contentsOf(const support::TemporaryFolder& folder) {
  Files files;
  for (const auto& file : std::filesystem::recursive_directory_iterator(folder.path())) {
    if (file.is_directory()) continue;
    const std::string path = support::textOf(file.path());
    const std::string name = path.substr(folder.text().size());
    if (!path.ends_with(".zip")) {
      files[name] = shortened(support::readFile(path));
    } else {
      for (const auto& [entry, content] : entriesOf(path))
        files[name + '/' + entry] = shortened(content);
    }
  }
  return files;
}

void prepare(const support::TemporaryFolder& folder) {
  for (const char* name : {"temp\\x", "in\\kept", "in\\new", "out\\kept"}) {
    support::writeFile(folder.file(name), name);
  }
  ZipArchive archive;
  ASSERT_EQ(archive.create(folder.file("a.zip").c_str(), 1), 1);
  ASSERT_EQ(archive.insert(bytesOf(support::noise(100'000)), "kept", "", 0), 1);
  ASSERT_EQ(archive.insert(bytesOf("old"), "replaced", "", 0), 1);
  ASSERT_TRUE(FRT_ZIP_FOLDER(folder.file("out").c_str(), folder.file("pack.zip").c_str()));
}

struct Operation {
  const char* name;
  std::function<bool(const std::string& folder)> run;
};

void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }

// An operation of ZipArchive on a.zip.
std::function<bool(const std::string&)> onArchive(std::function<bool(ZipArchive&)> change) {
  return [change](const std::string& folder) {
    ZipArchive archive;
    return archive.open((folder + "a.zip").c_str(), kReadWrite) != 0 && change(archive);
  };
}

const Operation kOperations[] = {
    {"append", onArchive([](ZipArchive& archive) {
       return archive.insert(bytesOf("new"), "added", "", 0) != 0;
     })},
    {"replace", onArchive([](ZipArchive& archive) {
       return archive.insert(bytesOf("new"), "replaced", "", 1) != 0;
     })},
    {"remove", onArchive([](ZipArchive& archive) { return archive.remove("replaced") != 0; })},
    {"create",
     [](const std::string& folder) {
       return ZipArchive().create((folder + "a.zip").c_str(), 1) != 0;
     }},
    {"FRT_ZIP_FOLDER",
     [](const std::string& folder) {
       return FRT_ZIP_FOLDER((folder + "in").c_str(), (folder + "pack.zip").c_str());
     }},
    {"packFolder",
     [](const std::string& folder) {
       const FileSystem::Report report =
           FileSystem::packFolder((folder + "in").c_str(), (folder + "pack.zip").c_str());
       return report.reason == FileSystem::Reason::None;
     }},
    {"apply",
     [](const std::string& folder) {
       FileSystem::ArchiveChange change;
       change.remove("replaced");
       change.insertBytes(bytesOf("new"), "added", "");
       return change.apply((folder + "a.zip").c_str()).reason == FileSystem::Reason::None;
     }},
    {"extract", onArchive([](ZipArchive& archive) {
       const std::string path = archive.fileName();
       const std::string target = path.substr(0, path.size() - 5) + "out\\kept";
       return archive.extract("kept", target.c_str()) != 0;
     })},
    {"FRT_UNZIP_FILE",
     [](const std::string& folder) {
       return FRT_UNZIP_FILE((folder + "pack.zip").c_str(), (folder + "in").c_str());
     }},
};

// A folder in which an operation runs, with the library's temporary files.
class Workplace {
 public:
  explicit Workplace(const Operation& operation) : operation_(operation) { prepare(folder_); }

  bool run() const {
    const std::string before = std::getenv("TMP") != nullptr ? std::getenv("TMP") : "";
    SetEnvironmentVariableA("TMP", folder_.file("temp").c_str());
    const bool done = operation_.run(folder_.text());
    SetEnvironmentVariableA("TMP", before.c_str());
    return done;
  }
  bool runObserved(unsigned failing) const {
    const ObservedCalls observed(failing);
    return run();
  }
  Files contents() const { return contentsOf(folder_); }

 private:
  const Operation& operation_;
  support::TemporaryFolder folder_;
};

class WindowsCalls : public testing::TestWithParam<Operation> {};

TEST_P(WindowsCalls, CommitBeforeTheyRename) {
  const Workplace workplace(GetParam());
  ASSERT_TRUE(workplace.runObserved(0));
  EXPECT_EQ(calls.renamed, "");
  // Temporary files do not last.
  for (const std::string& path : calls.uncommitted) {
    EXPECT_EQ(GetFileAttributesA(path.c_str()), INVALID_FILE_ATTRIBUTES) << path;
  }
  EXPECT_EQ(calls.renames, GetParam().name == std::string("append") ? 0U : 1U);
}

TEST_P(WindowsCalls, ThatFailLeaveTheOldOrTheNewState) {
  const Workplace undisturbed(GetParam());
  const Files before = undisturbed.contents();
  ASSERT_TRUE(undisturbed.run());
  const Files after = undisturbed.contents();
  unsigned failures = 0;
  for (unsigned failing = 1; failing == 1 || calls.made >= failing - 1; ++failing) {
    const Workplace workplace(GetParam());
    const bool done = workplace.runObserved(failing);
    // An archive that cannot be opened after its creation is the new one.
    const Files now = workplace.contents();
    const bool isNew = done || (GetParam().name == std::string("create") && now == after);
    EXPECT_EQ(now, isNew ? after : before) << "call " << failing;
    if (done) continue;
    ++failures;
    EXPECT_TRUE(workplace.run()) << "call " << failing;
    EXPECT_EQ(workplace.contents(), after) << "call " << failing;
  }
  EXPECT_GT(failures, 3U);
}

INSTANTIATE_TEST_SUITE_P(Each, WindowsCalls, testing::ValuesIn(kOperations),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
