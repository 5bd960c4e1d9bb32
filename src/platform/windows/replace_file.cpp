#include "platform/replace_file.h"

bool platform::replaceFile(HANDLE, const char* path, const char* version) {
  return CopyFileA(version, path, FALSE) != 0;
}

bool platform::canReplaceFile(HANDLE, const char*) { return true; }

void platform::removeUnfinishedVersion(HANDLE, const char*) {}
