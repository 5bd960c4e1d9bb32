#include "platform/replace_file.h"

#include <cstdint>
#include <memory>
#include <string>

#include "platform/windows/replacement_file.h"

namespace platform {
namespace {

constexpr DWORD kShareReadWrite = FILE_SHARE_READ | FILE_SHARE_WRITE;

FileHandle openFile(const char* path, DWORD access, DWORD share) {
  return FileHandle(
      CreateFileA(path, access, share, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

// Opens the file for writing if it is still the original and unchanged.
FileHandle openUnchanged(const char* path, DWORD share, const OriginalFile& original) {
  FileHandle file = openFile(path, GENERIC_READ | GENERIC_WRITE, share);
  if (file && !original.isUnchanged(file.get())) {
    file.reset();
    SetLastError(ERROR_SHARING_VIOLATION);
  }
  return file;
}

// Reports whether no one has the file open or has written to it. The probe is closed again, since
// Windows does not rename over an open file. Other programs, such as scanners, open a file for
// moments, so a refusal is tried again.
bool isFree(const char* path, const OriginalFile& original) {
  constexpr DWORD kLongestWait = 32;
  for (DWORD wait = 1;; wait *= 2) {
    if (openUnchanged(path, 0, original)) return true;
    if (GetLastError() != ERROR_SHARING_VIOLATION || wait > kLongestWait) return false;
    Sleep(wait);
  }
}

bool moveTo(HANDLE file, LONGLONG position) {
  LARGE_INTEGER target{};
  target.QuadPart = position;
  return SetFilePointerEx(file, target, nullptr, FILE_BEGIN) != FALSE;
}

// Copies all bytes of `from` to the start of `to`.
bool copyContent(HANDLE from, HANDLE to, const CopyProgress& progress = {}) {
  constexpr DWORD kBlock = 1 << 20;
  const auto block = std::make_unique<unsigned char[]>(kBlock);
  if (!moveTo(from, 0) || !moveTo(to, 0)) return false;
  for (std::uint64_t copied = 0;;) {
    DWORD size = 0;
    DWORD written = 0;
    if (ReadFile(from, block.get(), kBlock, &size, nullptr) == FALSE) return false;
    if (size == 0) return true;
    if (WriteFile(to, block.get(), size, &written, nullptr) == FALSE || written != size) {
      return false;
    }
    copied += size;
    if (progress && !progress(copied)) {
      SetLastError(ERROR_REQUEST_ABORTED);
      return false;
    }
  }
}

bool setSize(HANDLE file, const LARGE_INTEGER& size) {
  return moveTo(file, size.QuadPart) && SetEndOfFile(file) != FALSE;
}

// Extends a file to the size of its new content, so that a full disk leaves the old one.
bool reserve(HANDLE file, HANDLE content) {
  LARGE_INTEGER oldSize{};
  LARGE_INTEGER newSize{};
  if (GetFileSizeEx(file, &oldSize) == FALSE || GetFileSizeEx(content, &newSize) == FALSE) {
    return false;
  }
  if (newSize.QuadPart <= oldSize.QuadPart || setSize(file, newSize)) return true;
  const DWORD error = GetLastError();
  setSize(file, oldSize);
  SetLastError(error);
  return false;
}

bool overwrite(HANDLE file, HANDLE content) {
  LARGE_INTEGER size{};
  return GetFileSizeEx(content, &size) != FALSE && copyContent(content, file) &&
         setSize(file, size) && FlushFileBuffers(file) != FALSE;
}

}  // namespace

bool replaceFile(FileHandle& opened, const char* path, const char* version,
                 const CopyProgress& progress) {
  const OriginalFile original(opened.get());
  const FileHandle content = openFile(version, GENERIC_READ, FILE_SHARE_READ);
  if (!original || !content) return false;
  ReplacementFile replacement(pathWithoutLink(path, opened.get()), &original);
  if (replacement) {
    if (!copyContent(content.get(), replacement.handle(), progress) || !replacement.complete()) {
      return false;
    }
  } else if (!isRefusal(GetLastError())) {
    return false;
  }
  opened.reset();
  // A rename would separate a file with several names.
  if (replacement && original.hasOneName()) {
    if (isFree(path, original) && replacement.putInPlace(true)) return true;
    if (!isRefusal(GetLastError())) return false;
  }
  const FileHandle file = openUnchanged(path, kShareReadWrite, original);
  if (!file || !reserve(file.get(), content.get())) return false;
  // From now on the file may have a part of the new content, so the whole of it stays beside it.
  if (replacement) replacement.giveLastingName();
  if (overwrite(file.get(), content.get())) return true;
  replacement.keep();
  return false;
}

bool canReplaceFile(HANDLE, const char*) { return true; }

void removeUnfinishedVersion(HANDLE, const char*) {}

}  // namespace platform
