// Marker files named by the process. Their presence is the lock.

#include <filesystem/files.h>

#include <string>

#include "path/fixed_text.h"
#include "platform/unique_handle.h"
#include "platform/win32.h"

namespace FileSystem {
namespace {

// A folder text that fills its buffer has no room for a separator and is taken
// as it is.
Detail::PathText lockFileOf(const char* folder) {
  Detail::PathText name(folder);
  if (!name.view().empty() && name.view().back() != '\\') name.append("\\");
  // The platform's number is unsigned, but stands in the name as a signed one.
  name.append(std::to_string(static_cast<int>(GetCurrentProcessId())));
  name.append(".lock");
  return name;
}

}  // namespace

int CreateLockFile(const char* folder) {
  const platform::FileHandle file(CreateFileA(
      lockFileOf(folder).c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
      nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  return file ? 1 : 0;
}

int DeleteLockFile(const char* folder) { return DeleteFileA(lockFileOf(folder).c_str()); }

}  // namespace FileSystem
