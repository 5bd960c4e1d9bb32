// Copying a file by rule, and the content of a folder.

#include <filesystem/enumeration.h>
#include <filesystem/files.h>
#include <filesystem/path.h>

#include <vector>

#include "enumeration/search.h"
#include "files/make_folders.h"
#include "path/fixed_text.h"
#include "path/with_backslash.h"
#include "platform/win32.h"

namespace FileSystem {
namespace {

constexpr unsigned int kExistingBit = 2;
constexpr unsigned int kOlderBit = 4;

using TargetText = Detail::FixedText<261>;

int copy(const char* source, const char* target, BOOL failIfExists) {
  return ::CopyFileA(source, target, failIfExists);
}

// 0 if the file has none.
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

// Copies the files that lie directly in a folder; gives their number. What
// cannot be opened is not copied, so that no probe is needed. The names are
// taken first, because the target may lie in the source.
long copyFiles(const std::string& source, const std::string& target) {
  std::vector<std::string> names;
  const std::string pattern = Detail::withBackslash(source) + "*.*";
  for (auto search = Detail::Search::forNames(pattern); search.next();) {
    if (!search.isFolder()) names.emplace_back(search.entry().cFileName);
  }
  Detail::makeFolders(target.c_str());
  long count = 0;
  for (const std::string& name : names) {
    if (copy((source + name).c_str(), (target + name).c_str(), FALSE) != 0) ++count;
  }
  return count;
}

}  // namespace

int CopyFileA(const char* source, const char* targetFolder, unsigned int mode) {
  TargetText target{std::string_view(targetFolder)};
  target.append(extractName(source));
  target.append(extractExtension(source));
  if (mode == kCopyIfMissing) return copy(source, target.c_str(), TRUE);
  return permits(mode, source, target.c_str()) ? copy(source, target.c_str(), FALSE) : 0;
}

long CopyContent(const std::string& source, const std::string& target) {
  constexpr long kNoTarget = -4;
  std::vector<FILE_INFORMATION> folders;
  EnumFolders(folders, source.c_str(), 1);
  if (EnsurePathExists(target.c_str()) == 0) return kNoTarget;
  long count = 0;
  for (const FILE_INFORMATION& folder : folders) {
    const std::string below = std::string(folder.cFileName) + '\\';
    count += copyFiles(source + below, target + below);
  }
  return count + copyFiles(source, target);
}

}  // namespace FileSystem
