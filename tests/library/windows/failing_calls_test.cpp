// The order in which the library commits and renames, and calls that write and fail.

#include <filesystem/zip.h>

#include <algorithm>
#include <cstdlib>
#include <set>

#include "library/windows/imports.h"
#include "reliability/operations.h"
#include "support/temporary_folder.h"

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

using operations::Files;
using operations::Operation;

// A name for each operation whose calls are tested.
const char* const kNames[] = {"insert",
                              "replace",
                              "remove",
                              "pack_folder",
                              "change_by_rewriting",
                              "create_over_an_archive",
                              "pack_over_an_archive",
                              "extract_over_a_file"};

std::vector<Operation> tested() {
  std::vector<Operation> result;
  for (const char* const name : kNames) {
    const auto all = operations::all();
    result.push_back(*std::find_if(all.begin(), all.end(), [&](const Operation& operation) {
      return operation.name == std::string(name);
    }));
  }
  result.push_back({"unpack_over_a_file", [](const std::string& folder) {
                      return FRT_UNZIP_FILE((folder + "one.zip").c_str(),
                                            (folder + "out/deep").c_str());
                    }});
  return result;
}

// A folder in which an operation runs, with the library's temporary files.
class Workplace {
 public:
  explicit Workplace(const Operation& operation) : operation_(operation) {
    std::filesystem::create_directory(folder_.path() / "temp");
    operations::prepare(folder_.text(), operation);
    EXPECT_TRUE(FRT_ZIP_FOLDER(folder_.file("in/deep").c_str(), folder_.file("one.zip").c_str()));
  }

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
  Files contents() const { return operations::contentsOf(folder_.path(), true); }

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
  EXPECT_EQ(calls.renames, GetParam().name == std::string("insert") ? 0U : 1U);
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
    const bool isNew =
        done || (GetParam().name == std::string("create_over_an_archive") && now == after);
    EXPECT_TRUE(now == (isNew ? after : before)) << "call " << failing;
    if (done) continue;
    ++failures;
    EXPECT_TRUE(workplace.run()) << "call " << failing;
    EXPECT_TRUE(workplace.contents() == after) << "call " << failing;
  }
  EXPECT_GT(failures, 3U);
}

INSTANTIATE_TEST_SUITE_P(Each, WindowsCalls, testing::ValuesIn(tested()),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
