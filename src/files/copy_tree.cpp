// Copies of the content of a folder.

#include <filesystem/files.h>
#include <filesystem/trees.h>

#include <string>
#include <vector>

#include "files/copy_target.h"
#include "files/folder_failure.h"
#include "files/tree_call.h"
#include "files/tree_copy.h"
#include "path/with_backslash.h"
#include "path/zero_terminated.h"
#include "platform/open_directory.h"
#include "platform/win32.h"

namespace FileSystem {
namespace {

// Reports whether a folder can be listed.
Reason checkSource(const std::string& path) {
  using platform::OpenDirectory;
  const OpenDirectory folder(path, OpenDirectory::LastLink::Followed);
  return folder ? Reason::None : Detail::folderFailure(path, GetLastError());
}

}  // namespace

long CopyContent(const std::string& sourceText, const std::string& targetText) {
  constexpr long kNoTarget = -4;
  const std::string target(Detail::upToZero(targetText));
  std::vector<std::string> created;
  if (Detail::prepareTarget(target, created) != Reason::None) return kNoTarget;
  Detail::TreeCall call;
  Detail::TreeCopy(std::string(Detail::upToZero(sourceText)), target, call).run(created);
  return static_cast<long>(call.done());
}

Report copyTree(const char* source, const char* target, const Options& options) {
  const std::string from = Detail::withBackslash(source);
  const std::string to = Detail::creatable(Detail::withBackslash(target));
  Detail::TreeCall call(options);
  Reason reason = *source == '\0' || *target == '\0' ? Reason::Missing : checkSource(from);
  if (reason != Reason::None) return call.finish(reason);
  Detail::TreeCopy copy(from, to, call);
  if (call.hasProgress()) copy.count();
  if (call.isCancelled()) return call.finish(reason);
  std::vector<std::string> created;
  reason = Detail::prepareTarget(to, created);
  if (reason == Reason::None) copy.run(created);
  return call.finish(reason);
}

}  // namespace FileSystem
