#include "files/delete_tree.h"

#include <filesystem/trees.h>

#include "files/tree_deletion.h"
#include "path/with_backslash.h"
#include "platform/file_identity.h"
#include "platform/win32.h"
#include "reporting/reasons.h"

namespace FileSystem {
namespace {

class Deletion : public Detail::TreeVisitor {
 public:
  explicit Deletion(Detail::TreeCall& call) : call_(call) {}

  bool enter(const std::string& path) override { return !call_.hasProgress() || call_.begin(path); }

  Detail::Visit visit(const Detail::TreeEntry& entry) override {
    if (call_.reports() && !call_.begin(entry.path())) return Detail::Visit::Last;
    const bool isDeleted = entry.directory.deleteEntry();
    // Another process may have deleted it.
    const DWORD error = isDeleted ? ERROR_SUCCESS : GetLastError();
    const bool isThere = !isDeleted && error != ERROR_FILE_NOT_FOUND;
    call_.end(isThere ? Detail::reasonOfError(error) : Reason::None);
    if (call_.isCancelled()) return Detail::Visit::Last;
    return isThere ? Detail::Visit::Kept : Detail::Visit::Deleted;
  }

  void fail(const std::string& path, Reason reason) override { call_.failFolder(path, reason); }

 private:
  Detail::TreeCall& call_;
};

// Reports whether the folder, whose path ends in a separator, is the root of a drive or share.
bool isRoot(const std::string& folder) {
  platform::FileIdentity own;
  platform::FileIdentity parent;
  return platform::fileIdentity(folder.c_str(), own) &&
         platform::fileIdentity((folder + "..").c_str(), parent) && own == parent;
}

}  // namespace

Reason Detail::deleteTree(const std::string& folder, TreeCall& call) {
  Deletion visitor(call);
  const TreeWalk walk =
      walkTree(folder, platform::OpenDirectory::LastLink::Refused, Emptied::Removed, visitor);
  if (call.isCancelled() || RemoveDirectoryA(folder.c_str()) != FALSE) return Reason::None;
  if (walk.isEmptied) visitor.fail({}, removalFailure(GetLastError()));
  return walk.reason;
}

Report deleteTree(const char* folder, const Options& options) {
  const std::string path = Detail::withBackslash(folder);
  Detail::TreeCall call(options);
  if (*folder == '\0') return call.finish(Reason::Missing);
  if (isRoot(path)) return call.finish(Reason::NoPermission);
  const Reason reason = Detail::deleteTree(path, call);
  return call.finish(reason);
}

}  // namespace FileSystem
