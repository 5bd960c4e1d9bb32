#include "zip/held_file.h"

#include <filesystem/files.h>

#include "platform/replace_file.h"

void ZipHeldFile::acquire() {
  if (name.empty()) return;
  // Opening for reading succeeds only where FileExists() does.
  const bool reads = (access & GENERIC_READ) != 0;
  if (!reads && FileSystem::FileExists(name.c_str()) == 0) return;
  const DWORD share = (access & GENERIC_WRITE) != 0 ? 0 : FILE_SHARE_READ;
  handle_.reset(CreateFileA(name.c_str(), access, share, nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, nullptr));
}

void ZipHeldFile::cleanUp() {
  // A handle without access does not keep out a process that is writing a new version.
  if (canRead() || canWrite()) platform::removeUnfinishedVersion(handle_.get(), name.c_str());
}

void ZipHeldFile::setName(const char* newName) {
  release();
  name = newName != nullptr ? newName : "";
}
