// Copies of single files, by mode.

#include <filesystem/files.h>
#include <filesystem/path.h>

#include <boost/format.hpp>
#include <string>
#include <string_view>

#include "path/fixed_text.h"
#include "platform/win32.h"

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

}  // namespace

int CopyFileA(const char* source, const char* targetFolder, unsigned int mode) {
  const TargetText target{std::string_view(str(boost::format("%s%s%s") % targetFolder %
                                               extractName(source) % extractExtension(source)))};
  if (mode == kCopyIfMissing) return copy(source, target.c_str(), TRUE);
  return permits(mode, source, target.c_str()) ? copy(source, target.c_str(), FALSE) : 0;
}

}  // namespace FileSystem
