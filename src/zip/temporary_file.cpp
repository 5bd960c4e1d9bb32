#include "zip/temporary_file.h"

#include "platform/abandoned_files.h"

namespace zip {

TemporaryFile::TemporaryFile() {
  char folder[MAX_PATH + 1] = {};
  created_ = GetTempPathA(sizeof folder, folder) != 0 &&
             GetTempFileNameA(folder, platform::kTemporaryPrefix, 0, path_) != 0;
  if (created_) platform::deleteAbandonedTemporaryFiles(path_);
}

TemporaryFile::~TemporaryFile() {
  if (created_) DeleteFileA(path_);
}

}  // namespace zip
