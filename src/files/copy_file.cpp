// Copies of single files, with reasons and progress.

#include <filesystem/path.h>
#include <filesystem/trees.h>

#include <string>
#include <vector>

#include "files/copy_target.h"
#include "files/tree_call.h"
#include "path/with_backslash.h"
#include "platform/copy_file.h"
#include "platform/win32.h"
#include "reporting/reasons.h"

namespace FileSystem {
namespace {

void copyTo(const std::string& target, const char* file, Detail::TreeCall& call) {
  platform::CopyProgress progress;
  if (call.hasProgress()) progress = [&](std::uint64_t done) { return call.moveTo(done); };
  const bool keeps = call.existing() == ExistingFiles::Keep;
  if (platform::copyFile(file, target.c_str(), keeps, progress)) return call.end(Reason::None);
  call.end(Detail::copyFailure(file, target.c_str(), false, GetLastError()));
}

}  // namespace

Report copyFile(const char* file, const char* folder, const Options& options) {
  const std::string to = Detail::creatable(Detail::withBackslash(folder));
  const std::string name = extractFilename(file);
  Detail::TreeCall call(options);
  if (name.empty() || *folder == '\0') return call.finish(Reason::Missing);
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  if (GetFileAttributesExA(file, GetFileExInfoStandard, &data) == 0) {
    return call.finish(Detail::reasonOfError(GetLastError()));
  }
  const bool isFolder = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  if (isFolder) return call.finish(Reason::IsAFolder);
  std::vector<std::string> created;
  const Reason reason = Detail::prepareTarget(to, created);
  if (reason != Reason::None) return call.finish(reason);
  call.expect(1, std::uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow);
  if (call.begin(name)) copyTo(to + name, file, call);
  return call.finish();
}

}  // namespace FileSystem
