// Finding and deletion of the old files of a tree.

#include <filesystem/files.h>
#include <filesystem/trees.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "files/attributes.h"
#include "files/file_time.h"
#include "files/tree_call.h"
#include "files/tree_deletion.h"
#include "path/fixed_text.h"
#include "path/with_backslash.h"
#include "path/zero_terminated.h"
#include "platform/file_identity.h"
#include "platform/win32.h"
#include "reporting/reasons.h"

namespace FileSystem {
namespace {

// The current time as fileTime returns times, without milliseconds.
double now() {
  SYSTEMTIME time{};
  GetLocalTime(&time);
  double date = 0.0;
  return SystemTimeToVariantTime(&time, &date) ? date : 0.0;
}

// Converts file times to dates as dateOf() does, with the offset that local time has when it is created.
// Asking the system for that again takes as long as opening a file.
class LocalDates {
 public:
  LocalDates() {
    constexpr std::uint64_t kAnyTime = std::uint64_t{1} << 56;
    const FILETIME utc = timeOf(kAnyTime);
    FILETIME local = utc;
    FileTimeToLocalFileTime(&utc, &local);
    offset_ = ticksOf(local) - kAnyTime;
  }

  double of(const FILETIME& time) const {
    return Detail::dateOfLocal(timeOf(ticksOf(time) + offset_));
  }

 private:
  static std::uint64_t ticksOf(const FILETIME& time) {
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
  }
  static FILETIME timeOf(std::uint64_t ticks) {
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
  }

  std::uint64_t offset_ = 0;  // modulo 2^64
};

bool isTemporaryName(std::string_view name) {
  constexpr std::string_view kExtension = ".tmp";
  return name.size() >= kExtension.size() &&
         lstrcmpiA(name.data() + (name.size() - kExtension.size()), kExtension.data()) == 0;
}

// Visits the files that EnumFilesWithPath lists, directly in the start directory only those of the
// pattern `*.tmp`.
class Sweep : public Detail::TreeVisitor {
 public:
  enum class Mode { Finds, Deletes };

  // Files are old if they were last written at `limit` or before.
  Sweep(std::string start, double limit, Mode mode, Detail::TreeCall& call)
      : start_(std::move(start)), limit_(limit), mode_(mode), call_(call) {}

  bool enter(const std::string& path) override { return !call_.hasProgress() || call_.begin(path); }
  Detail::Visit visit(const Detail::TreeEntry& entry) override;
  void fail(const std::string& path, Reason reason) override { call_.failFolder(path, reason); }

 private:
  bool isOld(const Detail::TreeEntry& entry) const;
  bool isNoFile(const Detail::TreeEntry& entry) const;
  Reason deleteOrFind(const Detail::TreeEntry& entry) const;

  const std::string start_;
  const double limit_;
  const LocalDates dates_;
  const Mode mode_;
  Detail::TreeCall& call_;
  int count_ = 0;
};

bool Sweep::isOld(const Detail::TreeEntry& entry) const {
  FILETIME time{};
  return entry.directory.lastWrite(time) && limit_ >= dates_.of(time);
}

bool Sweep::isNoFile(const Detail::TreeEntry& entry) const {
  return !entry.directory.isRegular() && !entry.directory.canOpen() &&
         platform::isNoFile((start_ + entry.path()).c_str());
}

// Deletes or finds a file, unless it is not listed. Returns why it stays.
Reason Sweep::deleteOrFind(const Detail::TreeEntry& entry) const {
  platform::OpenDirectory& directory = entry.directory;
  const std::string_view name = directory.name();
  if (name.empty()) return Reason::Failed;
  if (start_.size() + entry.directoryPath.size() + name.size() >= Detail::kPathBuffer) {
    return Reason::PathTooLong;
  }
  const bool isDone = mode_ == Mode::Deletes ? directory.deleteIfOpenable()
                                             : directory.canOpen() && directory.canDelete();
  return isDone ? Reason::None : Detail::reasonOfError(GetLastError());
}

Detail::Visit Sweep::visit(const Detail::TreeEntry& entry) {
  using Detail::Visit;
  // Reading a large folder takes long. The host can cancel that, too.
  constexpr int kInterval = 1000;
  if (call_.hasProgress() && ++count_ % kInterval == 0 && !call_.begin(entry.path())) {
    return Visit::Last;
  }
  if (entry.isAtTop && !isTemporaryName(entry.directory.name())) return Visit::Kept;
  if (!isOld(entry)) return Visit::Kept;
  if (isNoFile(entry)) return Visit::Kept;
  if (call_.reports() && !call_.begin(entry.path())) return Visit::Last;
  const Reason reason = deleteOrFind(entry);
  call_.end(reason);
  if (call_.isCancelled()) return Visit::Last;
  return reason == Reason::None ? Visit::Deleted : Visit::Kept;
}

// Returns the start of the sweep, with a separator. An empty text stays empty and names no folder;
// with a separator it would be the root of the current drive.
std::string startOf(std::string_view folder) {
  return folder.empty() ? std::string() : Detail::withBackslash(folder);
}

// Returns why the folder cannot be listed.
Reason sweep(const std::string& start, unsigned int days, Sweep::Mode mode,
             Detail::TreeCall& call) {
  Sweep visitor(start, now() - static_cast<double>(days), mode, call);
  const bool deletes = mode == Sweep::Mode::Deletes;
  const Detail::TreeWalk walk =
      Detail::walkTree(start, platform::OpenDirectory::LastLink::Followed,
                       deletes ? Detail::Emptied::Removed : Detail::Emptied::Kept, visitor);
  // A link is not an empty directory, even if its target is one.
  if (walk.topShrank && !Detail::isLink(start.c_str())) DeleteEmptyFolder(start.c_str());
  return walk.reason;
}

Report report(const char* folder, unsigned int days, Sweep::Mode mode, const Options& options) {
  Detail::TreeCall call(options);
  const Reason reason = sweep(startOf(folder), days, mode, call);
  return call.finish(reason);
}

}  // namespace

unsigned int eraseOldFile(const std::string& folder, unsigned int days) {
  Detail::TreeCall call;
  sweep(startOf(Detail::upToZero(folder)), days, Sweep::Mode::Deletes, call);
  return static_cast<unsigned int>(call.done());
}

Report deleteOldFiles(const char* folder, unsigned int days, const Options& options) {
  return report(folder, days, Sweep::Mode::Deletes, options);
}

Report findOldFiles(const char* folder, unsigned int days, const Options& options) {
  return report(folder, days, Sweep::Mode::Finds, options);
}

}  // namespace FileSystem
