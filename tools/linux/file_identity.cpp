#include "file_identity.h"

#include <sys/stat.h>

#include "paths.h"

std::optional<FileIdentity> identityOf(const std::string& path) {
  struct stat status {};
  if (stat(systemPath(path).c_str(), &status) != 0) return std::nullopt;
  return FileIdentity{status.st_dev, status.st_ino};
}
