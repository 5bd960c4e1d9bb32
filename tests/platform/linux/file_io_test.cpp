// Handles that are descriptors, and names that are no regular files.

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>

#include <cstdlib>
#include <functional>

#include "platform/linux/opening/descriptor.h"
#include "platform/probe_open.h"
#include "support/open_file.h"
#include "support/temporary_folder.h"

namespace {

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;

// The descriptor of a closed handle is soon used again, here for the same file,
// and no copy of the closed handle must reach it.
TEST(FileHandlesOnLinux, AreNotReusedNorInherited) {
  const support::TemporaryFolder folder;
  const std::string path = folder.file("file");
  const HANDLE closed = support::openFile(path, kReadWrite, 0, CREATE_NEW).get();
  const platform::FileHandle other = support::openFile(path, kReadWrite);
  char byte = 'x';
  DWORD count = 0;
  LARGE_INTEGER number{};
  const std::function<BOOL(HANDLE)> calls[] = {
      [&](HANDLE handle) { return ReadFile(handle, &byte, 1, &count, nullptr); },
      [&](HANDLE handle) { return WriteFile(handle, &byte, 1, &count, nullptr); },
      [&](HANDLE handle) { return SetFilePointerEx(handle, number, nullptr, FILE_BEGIN); },
      [&](HANDLE handle) { return GetFileSizeEx(handle, &number); },
      [&](HANDLE handle) { return SetEndOfFile(handle); },
      [&](HANDLE handle) { return FlushFileBuffers(handle); },
      [&](HANDLE handle) { return CloseHandle(handle); },
  };
  for (const HANDLE handle : {closed, INVALID_HANDLE_VALUE, static_cast<HANDLE>(nullptr)}) {
    for (const auto& call : calls) {
      SetLastError(ERROR_SUCCESS);
      EXPECT_FALSE(call(handle)) << &call - calls;
      EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE) << &call - calls;
    }
  }
  EXPECT_TRUE(WriteFile(other.get(), "y", 1, &count, nullptr));
  const int descriptor = static_cast<int>(reinterpret_cast<std::uintptr_t>(other.get()) & 0xFFFF);
  EXPECT_NE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0);
}

// Opening a FIFO wakes a process that waits for its other end, and opening a
// device can set it going. Neither is opened by anything, which inotify reports.
TEST(OpeningOnLinux, OpensNothingButRegularFiles) {
  if (!support::fileSystem().fifos) GTEST_SKIP() << "no FIFOs here";
  const support::TemporaryFolder folder;
  const std::string file = folder.file("source");
  const std::string fifo = folder.file("fifo");
  support::writeFile(file, "content");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  std::filesystem::create_symlink(fifo, folder.file("link"));
  // A device that no other process opens.
  const platform::native::Descriptor terminal(posix_openpt(O_RDWR | O_NOCTTY));
  ASSERT_EQ(unlockpt(terminal.get()), 0);
  const std::string device = ptsname(terminal.get());
  const platform::native::Descriptor events(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
  for (const std::string& path : {fifo, device}) {
    ASSERT_GE(inotify_add_watch(events.get(), path.c_str(), IN_OPEN), 0);
  }
  for (const std::string& path : {fifo, folder.file("link"), folder.name(), device}) {
    for (const DWORD access : {GENERIC_READ, GENERIC_WRITE, kReadWrite, DWORD{0}}) {
      for (const DWORD disposition : {CREATE_ALWAYS, OPEN_EXISTING, OPEN_ALWAYS}) {
        EXPECT_FALSE(support::openFile(path, access, 3, disposition)) << path;
        EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED) << path;
      }
      EXPECT_FALSE(platform::probeOpen(path.c_str(), access, 3)) << path;
    }
    EXPECT_FALSE(CopyFileA(path.c_str(), folder.file("copy").c_str(), FALSE)) << path;
    EXPECT_FALSE(CopyFileA(file.c_str(), path.c_str(), FALSE)) << path;
  }
  for (const DWORD flags : {DWORD{0}, FIND_NAMES_ONLY}) {
    WIN32_FIND_DATAA data{};
    const platform::SearchHandle search(FindFirstFileExA((folder.text() + "*").c_str(),
                                                         FindExInfoBasic, &data,
                                                         FindExSearchNameMatch, nullptr, flags));
    ASSERT_TRUE(search);
    do {
      const std::string name = data.cFileName;
      EXPECT_EQ(platform::probeFound(search.get(), folder.file(name).c_str()), name == "source");
    } while (FindNextFileA(search.get(), &data) != FALSE);
  }
  EXPECT_TRUE(DeleteFileA(folder.file("link").c_str()));
  EXPECT_TRUE(DeleteFileA(fifo.c_str()));
  alignas(inotify_event) char event[sizeof(inotify_event) + NAME_MAX + 1];
  while (read(events.get(), event, sizeof(event)) > 0) {
    EXPECT_EQ(reinterpret_cast<inotify_event*>(event)->mask & IN_OPEN, 0U);
  }
}

}  // namespace
