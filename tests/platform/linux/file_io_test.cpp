// Handles that are descriptors, and what cannot be opened.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "platform/unique_handle.h"
#include "platform/win32.h"
#include "support/temporary_folder.h"

namespace {

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;

HANDLE open(const std::string& path, DWORD access, DWORD disposition) {
  return CreateFileA(path.c_str(), access, 3, nullptr, disposition, 0, nullptr);
}

// The descriptor of a closed handle is soon another file's, which the stale
// handle must neither write to nor close.
TEST(FileHandlesOnLinux, StaleOnesAreHarmless) {
  const support::TemporaryFolder folder;
  const HANDLE stale = open(folder.file("first"), kReadWrite, CREATE_NEW);
  ASSERT_TRUE(CloseHandle(stale));
  const platform::FileHandle other(open(folder.file("second"), kReadWrite, CREATE_NEW));
  DWORD count = 0;
  EXPECT_FALSE(WriteFile(stale, "x", 1, &count, nullptr));
  EXPECT_FALSE(SetEndOfFile(stale));
  EXPECT_FALSE(CloseHandle(stale));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
  EXPECT_TRUE(WriteFile(other.get(), "y", 1, &count, nullptr));
  for (const HANDLE none : {INVALID_HANDLE_VALUE, static_cast<HANDLE>(nullptr)}) {
    EXPECT_FALSE(CloseHandle(none));
    EXPECT_FALSE(ReadFile(none, nullptr, 0, &count, nullptr));
  }
}

TEST(FileHandlesOnLinux, AreNotInherited) {
  const support::TemporaryFolder folder;
  const platform::FileHandle file(open(folder.file("file"), kReadWrite, CREATE_NEW));
  const int descriptor = static_cast<int>(reinterpret_cast<std::uintptr_t>(file.get()) & 0xFFFF);
  EXPECT_NE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0);
}

TEST(FileHandlesOnLinux, OpeningNeverWaits) {
  const support::TemporaryFolder folder;
  const std::string fifo = folder.file("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  for (const std::string& path : {fifo, folder.name(), std::string("/dev/null")}) {
    for (const DWORD access : {GENERIC_READ, GENERIC_WRITE, kReadWrite}) {
      EXPECT_EQ(open(path, access, OPEN_EXISTING), INVALID_HANDLE_VALUE) << path;
      EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED) << path;
    }
  }
}

}  // namespace
