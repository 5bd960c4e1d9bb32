// Lock files: marker files named by the process id, whose existence is the lock.

#include <filesystem/files.h>

#include <boost/format.hpp>
#include <locale>
#include <string_view>

#include "path/fixed_text.h"
#include "platform/unique_handle.h"
#include "platform/win32.h"

namespace FileSystem {
namespace {

// Returns the path of this process's lock file. A folder text that fills its buffer has no space
// for a separator and stays as it is.
Detail::PathText lockFileOf(const char* folder) {
  Detail::PathText start(folder);
  if (!start.view().empty() && start.view().back() != '\\') start.append("\\");
  // The format takes the unsigned process id for a signed number.
  boost::format name("%s%d.lock", std::locale::classic());
  name % start.c_str() % static_cast<int>(GetCurrentProcessId());
  return Detail::PathText(std::string_view(str(name)));
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
