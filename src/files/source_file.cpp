#include "files/source_file.h"

#include "files/attributes.h"
#include "platform/file_identity.h"
#include "reporting/reasons.h"

namespace FileSystem::Detail {

platform::FileHandle openSource(const char* path) {
  return platform::FileHandle(CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                          nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_ARCHIVE, nullptr));
}

Reason reasonForUnopened(const char* path, DWORD error) {
  const Reason reason = reasonOfError(error, Reason::ReadFailed);
  if (reason == Reason::Missing) return reason;
  if (isDirectory(path)) return Reason::IsAFolder;
  return platform::isNoFile(path) ? Reason::NotAFile : reason;
}

Reason reasonForSource(const char* path) {
  const bool isOpen = static_cast<bool>(openSource(path));
  return isOpen ? Reason::None : reasonForUnopened(path, GetLastError());
}

}  // namespace FileSystem::Detail
