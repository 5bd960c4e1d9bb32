#pragma once
// What an archive keeps of files beside their names and contents, as the user asks for it.

#include <filesystem/options.h>

struct KeptRequest {
  bool noLinks = false;  // packing follows them, unpacking leaves them out
  bool noDirectories = false;
  bool noPermissions = false;
  bool noTimes = false;
  bool setId = false;
};

inline void keep(const KeptRequest& request, FileSystem::Options& options) {
  options.setLinks(!request.noLinks)
      .setFolders(!request.noDirectories)
      .setPermissions(!request.noPermissions)
      .setTimes(!request.noTimes)
      .setSetId(request.setId);
}
