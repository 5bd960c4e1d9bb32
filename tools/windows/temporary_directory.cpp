#include "temporary_directory.h"

#include <windows.h>

#include <filesystem>
#include <system_error>

#include "output.h"
#include "paths.h"
#include "text.h"

// The temporary directory belongs to the user.
FilePointer createPrivateFile(const std::string& path) {
  return FilePointer(std::fopen(path.c_str(), "w+b"));
}

TemporaryDirectory::TemporaryDirectory() {
  char base[MAX_PATH + 1] = {};
  GetTempPathA(sizeof(base), base);
  path_ = base + ("vesk-fs-" + std::to_string(GetCurrentProcessId())) + '-' +
          std::to_string(GetTickCount64());
  if (CreateDirectoryA(path_.c_str(), nullptr) == FALSE) {
    throw Failure("cannot create a directory " + inQuotes(path_));
  }
}

TemporaryDirectory::~TemporaryDirectory() { remove(); }

std::string TemporaryDirectory::file(const std::string& name) { return path_ + '\\' + name; }

void TemporaryDirectory::remove() {
  std::error_code ignored;
  std::filesystem::remove_all(systemPath(path_), ignored);
}
