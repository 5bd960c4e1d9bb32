#include "zip/temporary_file.h"

#include "platform/abandoned_files.h"

namespace zip {

TemporaryFile::TemporaryFile() {
  char folder[MAX_PATH + 1] = {};
  if (GetTempPathA(sizeof folder, folder) == 0 ||
      GetTempFileNameA(folder, platform::kTemporaryPrefix, 0, path_) == 0) {
    path_[0] = '\0';
    return;
  }
  platform::deleteAbandonedTemporaryFiles(path_);
}

TemporaryFile::~TemporaryFile() {
  if (*this) DeleteFileA(path_);
}

}  // namespace zip
