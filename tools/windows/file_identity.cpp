#include "file_identity.h"

#include <windows.h>

namespace {

std::uint64_t joined(DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; }

}  // namespace

std::optional<FileIdentity> identityOf(const std::string& path) {
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  // The flag lets a directory be opened too.
  const HANDLE file = CreateFileA(path.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (file == INVALID_HANDLE_VALUE) return std::nullopt;
  BY_HANDLE_FILE_INFORMATION information{};
  const BOOL isRead = GetFileInformationByHandle(file, &information);
  CloseHandle(file);
  if (isRead == FALSE) return std::nullopt;
  return FileIdentity{information.dwVolumeSerialNumber,
                      joined(information.nFileIndexHigh, information.nFileIndexLow)};
}
