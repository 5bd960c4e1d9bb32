#include "platform/copy_file.h"

#include <string>

#include "platform/windows/replacement_file.h"

namespace platform {
namespace {

struct Observer {
  const CopyProgress& progress;
  bool mayEnd;
};

DWORD CALLBACK tell(LARGE_INTEGER, LARGE_INTEGER copied, LARGE_INTEGER, LARGE_INTEGER, DWORD, DWORD,
                    HANDLE, HANDLE, LPVOID data) {
  const auto& observer = *static_cast<const Observer*>(data);
  const bool continues = observer.progress(static_cast<std::uint64_t>(copied.QuadPart));
  return continues || !observer.mayEnd ? PROGRESS_CONTINUE : PROGRESS_CANCEL;
}

bool copy(const char* source, const char* target, DWORD flags, Observer observer) {
  return CopyFileExA(source, target, tell, &observer, nullptr, flags) != FALSE;
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
