#include "zip/temporary_file.h"

namespace zip {

TemporaryFile::TemporaryFile() {
  char folder[MAX_PATH + 1] = {};
  if (GetTempPathA(sizeof folder, folder) == 0 || GetTempFileNameA(folder, "~za", 0, path_) == 0) {
    path_[0] = '\0';
  }
}

TemporaryFile::~TemporaryFile() {
  if (*this) DeleteFileA(path_);
}

}  // namespace zip
