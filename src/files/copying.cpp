// Copies of single files, by mode, and of the content of a folder.

#include <filesystem/files.h>
#include <filesystem/path.h>

#include <algorithm>
#include <boost/format.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "enumeration/folder_walk.h"
#include "files/make_folders.h"
#include "path/fixed_text.h"
#include "path/zero_terminated.h"
#include "platform/open_directory.h"
#include "platform/win32.h"
#include "platform/written_files.h"

namespace FileSystem {
namespace {

constexpr unsigned int kExistingBit = 2;
constexpr unsigned int kOlderBit = 4;

using TargetText = Detail::FixedText<261>;

int copy(const char* source, const char* target, BOOL failIfExists) {
  return ::CopyFileA(source, target, failIfExists);
}

// Returns the time of the last write, 0 if it cannot be read.
ULONGLONG lastWrite(const char* path) {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  GetFileAttributesExA(path, GetFileExInfoStandard, &data);
  return ULONGLONG{data.ftLastWriteTime.dwHighDateTime} << 32 | data.ftLastWriteTime.dwLowDateTime;
}

bool isOlder(const char* target, const char* source) {
  return lastWrite(target) < lastWrite(source);
}

// Reports whether a mode other than kCopyIfMissing copies the file.
bool permits(unsigned int mode, const char* source, const char* target) {
  if (mode == kCopyAlways) return true;
  if ((mode & kExistingBit) != 0) {
    return FileExists(target) != 0 && ((mode & kOlderBit) == 0 || isOlder(target, source));
  }
  return mode == kCopyIfMissingOrOlder && (FileExists(target) == 0 || isOlder(target, source));
}

struct FileName {
  std::string stored;
  std::string shown;
  bool isRegular;
};

// Lists everything but directories.
std::vector<FileName> listFiles(platform::OpenDirectory& directory) {
  std::vector<FileName> names;
  while (directory.next()) {
    if (directory.isDirectory()) continue;
    names.push_back({directory.storedName(), directory.name(), directory.isRegular()});
  }
  return names;
}

// Copies a file of a folder to another one, whatever has its name there.
bool copyOver(const std::string& source, const std::string& target, const std::string& name) {
  boost::format path("%s%s");
  const std::string from = str(path % source % name);
  return ::CopyFileA(from.c_str(), str(path % target % name).c_str(), FALSE) != FALSE;
}

// Creates a folder and, unlike EnsurePathExists, neither its parents nor another name than that.
void makeFolder(std::string path) {
  path.erase(path.find_last_not_of("\\/") + 1);
  Detail::makeFolder(path.c_str());
}

// Copies the files directly in a folder and returns their number. They are listed before the target
// is created, because the target may be in the source. A file whose name is that of an earlier one
// in the target, because the file system there takes both names for one, is not copied.
long copyFiles(const std::string& source, const std::string& target,
               platform::WrittenFiles& written) {
  using platform::OpenDirectory;
  OpenDirectory from(source, OpenDirectory::LastLink::Followed);
  const std::vector<FileName> names = listFiles(from);
  makeFolder(target);
  OpenDirectory to(target, OpenDirectory::LastLink::Followed);
  const auto copyFile = [&](const FileName& name) {
    if (name.isRegular && to) {
      if (to.copyNew(from, name.stored, written)) return true;
      // After another error the second way would only fail again.
      if (GetLastError() != ERROR_FILE_EXISTS) return false;
    }
    if (to.isWritten(name.stored, written)) return false;
    if (!copyOver(source, target, name.shown)) return false;
    to.addWritten(name.stored, written);
    return true;
  };
  return static_cast<long>(std::count_if(names.begin(), names.end(), copyFile));
}

}  // namespace

int CopyFileA(const char* source, const char* targetFolder, unsigned int mode) {
  const TargetText target{std::string_view(str(boost::format("%s%s%s") % targetFolder %
                                               extractName(source) % extractExtension(source)))};
  if (mode == kCopyIfMissing) return copy(source, target.c_str(), TRUE);
  return permits(mode, source, target.c_str()) ? copy(source, target.c_str(), FALSE) : 0;
}

long CopyContent(const std::string& sourceText, const std::string& targetText) {
  constexpr long kNoTarget = -4;
  const std::string source(Detail::upToZero(sourceText));
  const std::string target(Detail::upToZero(targetText));
  std::vector<std::string> folders;
  Detail::FolderWalk walk(source, true, true);
  walk.run([&](const WIN32_FIND_DATAA&) {
    folders.emplace_back(walk.relativePath());
    return true;
  });
  // EnsurePathExists would cut a longer path and create the folder of the rest.
  if (target.size() >= Detail::kPathBuffer || EnsurePathExists(target.c_str()) == 0) {
    return kNoTarget;
  }
  platform::WrittenFiles written;
  long count = 0;
  for (const std::string& folder : folders) {
    boost::format path("%s%s\\");
    const std::string from = str(path % source % folder);
    count += copyFiles(from, str(path % target % folder), written);
  }
  return count + copyFiles(source, target, written);
}

}  // namespace FileSystem
