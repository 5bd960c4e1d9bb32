#include "platform/copy_file.h"

#include <string>

#include "platform/windows/replacement_file.h"

namespace platform {
namespace {

struct Observer {
  const CopyProgress& progress;
  bool mayEnd;
  bool isReported = false;
};

DWORD CALLBACK report(LARGE_INTEGER, LARGE_INTEGER copied, LARGE_INTEGER, LARGE_INTEGER, DWORD,
                      DWORD, HANDLE, HANDLE, LPVOID data) {
  auto& observer = *static_cast<Observer*>(data);
  observer.isReported = true;
  const bool continues = observer.progress(static_cast<std::uint64_t>(copied.QuadPart));
  return continues || !observer.mayEnd ? PROGRESS_CONTINUE : PROGRESS_CANCEL;
}

std::uint64_t sizeOf(const char* path) {
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  GetFileAttributesExA(path, GetFileExInfoStandard, &data);
  return std::uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow;
}

bool copy(const char* source, const char* target, DWORD flags, Observer observer) {
  if (CopyFileExA(source, target, report, &observer, nullptr, flags) == FALSE) return false;
  // Wine copies without calling back. The end of the file is reported there.
  if (observer.isReported || observer.progress(sizeOf(target)) || !observer.mayEnd) return true;
  SetFileAttributesA(target, FILE_ATTRIBUTE_NORMAL);
  DeleteFileA(target);
  SetLastError(ERROR_REQUEST_ABORTED);
  return false;
}

// Replaces a file by a copy that is complete.
bool replace(const char* source, const char* target, const CopyProgress& progress) {
  FileHandle held(CreateFileA(target, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr));
  const bool isShared = !held && GetLastError() == ERROR_SHARING_VIOLATION;
  if (!held && !isShared) return false;
  const Observer inPlace{.progress = progress, .mayEnd = false};
  if (isShared) return copy(source, target, 0, inPlace);
  const OriginalFile original(held.get());
  if (!original) return false;
  if (!original.hasOneName()) {
    held.reset();
    return copy(source, target, 0, inPlace);
  }
  ReplacementFile replacement(pathWithoutLink(target, held.get()), &original);
  if (!replacement || !replacement.close() ||
      !copy(source, replacement.name().c_str(), 0, {.progress = progress, .mayEnd = true})) {
    return false;
  }
  // The copy has the attributes of its source.
  const DWORD attributes = GetFileAttributesA(replacement.name().c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES ||
      SetFileAttributesA(replacement.name().c_str(), FILE_ATTRIBUTE_HIDDEN) == FALSE ||
      !replacement.complete()) {
    return false;
  }
  // Windows does not rename over an open file.
  held.reset();
  if (!replacement.putInPlace(true)) return false;
  if ((attributes & FILE_ATTRIBUTE_READONLY) != 0) {
    SetFileAttributesA(target, GetFileAttributesA(target) | FILE_ATTRIBUTE_READONLY);
  }
  return true;
}

}  // namespace

bool copyFile(const char* source, const char* target, bool failIfExists,
              const CopyProgress& progress) {
  if (!progress) return CopyFileA(source, target, failIfExists ? TRUE : FALSE) != FALSE;
  const Observer observer{.progress = progress, .mayEnd = true};
  if (copy(source, target, COPY_FILE_FAIL_IF_EXISTS, observer)) return true;
  return !failIfExists && GetLastError() == ERROR_FILE_EXISTS && replace(source, target, progress);
}

}  // namespace platform
