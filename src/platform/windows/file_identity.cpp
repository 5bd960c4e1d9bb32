#include "platform/file_identity.h"

#include "platform/unique_handle.h"

namespace platform {

bool fileIdentity(const char* path, FileIdentity& identity) {
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  // No access is asked for, so that no sharing is violated.
  const FileHandle file(
      CreateFileA(path, 0, kShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  BY_HANDLE_FILE_INFORMATION information;
  if (!file || GetFileInformationByHandle(file.get(), &information) == FALSE) return false;
  identity = {.volume = information.dwVolumeSerialNumber,
              .index = std::uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow};
  return true;
}

bool isNoFile(const char* path) {
  const DWORD attributes = GetFileAttributesA(path);
  if (attributes != INVALID_FILE_ATTRIBUTES) return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  const DWORD error = GetLastError();
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

}  // namespace platform
