// tree.

#include <filesystem/enumeration.h>
#include <filesystem/files.h>

#include <cstdio>
#include <vector>

#include "commands.h"
#include "progress.h"

void tree(const std::string& folder, const std::string& pattern) {
  if (FileSystem::FolderExists(folder.c_str()) == 0) {
    throw Failure("there is no folder '" + folder + "'");
  }
  std::vector<std::string> files;
  {
    const Progress progress("listing " + folder);
    FileSystem::EnumFilesWithPath(files, folder.c_str(), pattern.c_str(), true);
  }
  for (const std::string& file : files) std::printf("%s\n", file.c_str());
}
