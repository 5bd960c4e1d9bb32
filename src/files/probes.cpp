// Probes of a path. The answers follow from the rules of opening and sharing, not from the
// directory entry; no probe keeps a handle open.

#include <filesystem/files.h>

#include "files/file_time.h"
#include "path/fixed_text.h"
#include "path/split_path.h"
#include "platform/probe_open.h"
#include "platform/unique_handle.h"
#include "platform/win32.h"

namespace FileSystem {
namespace {

static_assert(kAccessRead == GENERIC_READ && kAccessWrite == GENERIC_WRITE);

constexpr DWORD kShareReadWrite = FILE_SHARE_READ | FILE_SHARE_WRITE;

}  // namespace

int FileExists(const char* filename) {
  if (filename == nullptr) return 0;
  if (platform::probeOpen(filename, GENERIC_READ, kShareReadWrite)) return 1;

  const Detail::PathParts parts = Detail::splitPath(filename);
  if (!parts.drive.empty() || !parts.directory.empty()) return 0;

  char found[MAX_PATH];
  char* filePart = nullptr;
  return static_cast<int>(SearchPathA(nullptr, filename, nullptr, sizeof(found), found, &filePart));
}

int FolderExists(const char* path) {
  // With a unique number, GetTempFileNameA only composes a name and creates no file, but still
  // fails for a missing folder.
  constexpr UINT kComposeOnly = 1;
  char name[MAX_PATH];
  return GetTempFileNameA(path, "~", kComposeOnly, name) != 0 ? 1 : 0;
}

int IsFileLockedWrite(const char* filename) {
  return platform::probeOpen(filename, GENERIC_READ, FILE_SHARE_READ) ? 0 : 1;
}

int IsFileReadOnly(const char* filename) {
  // INVALID_FILE_ATTRIBUTES has all bits set, so a failure counts as read-only.
  return (GetFileAttributesA(filename) & FILE_ATTRIBUTE_READONLY) != 0 ? 1 : 0;
}

int TestCreate(const char* filename, unsigned long access) {
  const platform::FileHandle file(CreateFileA(filename, static_cast<DWORD>(access), kShareReadWrite,
                                              nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                                              nullptr));
  return file ? 1 : 0;
}

int TestOpen(const char* filename, unsigned long access) {
  return platform::probeOpen(filename, static_cast<DWORD>(access), kShareReadWrite) ? 1 : 0;
}

unsigned long AllowedAccess(const char* filename) {
  if (filename == nullptr || FileExists(filename) == 0) return kAccessReadWrite;
  if (TestOpen(filename, kAccessReadWrite) != 0) return kAccessReadWrite;
  return TestOpen(filename, kAccessRead) != 0 ? kAccessRead : kAccessNone;
}

double fileTime(const std::string& filename) {
  if (FileExists(filename.c_str()) == 0) return 0.0;
  WIN32_FILE_ATTRIBUTE_DATA data{};
  GetFileAttributesExA(filename.c_str(), GetFileExInfoStandard, &data);
  return Detail::dateOf(data.ftLastWriteTime);
}

}  // namespace FileSystem
