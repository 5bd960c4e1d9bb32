#include "platform/gathered_copies.h"

#include <sys/resource.h>

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

#include "platform/linux/metadata/attributes.h"
#include "platform/linux/names/native_path.h"
#include "platform/linux/replacing/durability.h"
#include "platform/linux/replacing/file_copy.h"
#include "platform/linux/system/last_error.h"

using namespace platform::native;

namespace platform {
namespace {

// Each file takes a descriptor while it waits, and so does each of their folders.
constexpr std::size_t kMostFiles = 256;
// The space that new versions may take while the old ones still have theirs.
constexpr off_t kMostBytes = off_t{16} << 20;
// Fewer files are committed one by one, since a common commit also waits for what other programs
// have written.
constexpr std::size_t kFewestTogether = 8;

struct Waiting {
  Waiting(const char* source, const char* name, GatheredCopies::Id number)
      : from(source), to(name), id(number) {}

  const std::string from;
  const std::string to;
  const GatheredCopies::Id id;
  Target target;
  WholeCopy copy{target};
};

using WaitingCopies = std::vector<std::unique_ptr<Waiting>>;

bool commitAll(const WaitingCopies& copies) {
  std::vector<int> descriptors;
  for (const auto& waiting : copies) descriptors.push_back(waiting->copy.descriptor());
  return descriptors.size() >= kFewestTogether && commitTogether(descriptors);
}

rlim_t mostDescriptors() {
  struct rlimit limit {};
  return getrlimit(RLIMIT_NOFILE, &limit) == 0 ? limit.rlim_cur : 0;
}

// Locks the target again and puts the copy in its place. If the target is no longer as it was, or if
// it cannot be replaced now, the file is copied anew. False, with the error, on failure.
bool putInPlace(Waiting& waiting, FileIdentity& file) {
  file = waiting.copy.identity();
  if (waiting.copy.lockTargetAgain()) {
    const Replaced result = waiting.copy.putInPlace();
    if (result == Replaced::Yes) return true;
    const int error = errno;
    if (result == Replaced::No) return fail(errorOnPath(NativePath(waiting.to.c_str()), error));
  }
  waiting.copy.drop();
  if (!copyFile(waiting.from.c_str(), waiting.to.c_str(), false)) return false;
  fileIdentity(waiting.to.c_str(), file);
  return true;
}

}  // namespace

struct GatheredCopies::State {
  // Opens both files. Null, with nothing changed, if the target has to be copied at once.
  std::unique_ptr<Waiting> begin(const char* from, const char* to, Id id, Source& source) {
    const NativePath path(to);
    if (!path.valid() || path.hadTrailingSeparator() || !openSource(from, source)) return nullptr;
    auto waiting = std::make_unique<Waiting>(from, to, id);
    Target& target = waiting->target;
    if (openTarget(path, source, target) != TargetState::Ready) return nullptr;
    if (!copies.empty()) waiting->copy.shareFolderOf(copies.back()->copy);
    if (copies.empty() || isOnOtherVolume(*waiting)) {
      gathers = canCommitTogether(target.held.get());
    }
    return gathers && isReplaceable(target) ? std::move(waiting) : nullptr;
  }

  void add(std::unique_ptr<Waiting> waiting, off_t size) {
    waiting->copy.closeTarget();
    bytes += size;
    // A killed process leaves no more than one file with a name.
    gathers = !waiting->copy.isNamed();
    isFull = !gathers || copies.size() + 1 >= kMostFiles || bytes >= kMostBytes ||
             isScarce(waiting->copy.descriptor());
    targets.add(identityOf(waiting->target.status), waiting->id);
    copies.push_back(std::move(waiting));
  }

  // The lowest free descriptor is used first, so a high one shows that many are in use. Half of them
  // are left to the program.
  bool isScarce(int descriptor) const { return static_cast<rlim_t>(descriptor) >= descriptors / 2; }

  bool isOnOtherVolume(const Waiting& waiting) const {
    return !copies.empty() && copies.back()->target.status.st_dev != waiting.target.status.st_dev;
  }

  OnEnd onEnd;
  const rlim_t descriptors = mostDescriptors();
  // False from the first target on a file system that has no common commit, or no files without
  // a name.
  bool gathers = true;
  WaitingCopies copies{};  // all on one volume
  off_t bytes = 0;
  bool isFull = false;
  WrittenFiles targets{};
};

GatheredCopies::GatheredCopies(OnEnd onEnd)
    : state_(std::make_unique<State>(State{.onEnd = std::move(onEnd)})) {}

GatheredCopies::~GatheredCopies() = default;

GatheredCopies::Outcome GatheredCopies::copy(const char* from, const char* to, bool failIfExists,
                                             const CopyProgress& progress, Id id) {
  if (state_->isFull) finish();
  Source source;
  std::unique_ptr<Waiting> waiting;
  if (!failIfExists && state_->gathers) waiting = state_->begin(from, to, id, source);
  const Replaced made =
      waiting != nullptr ? waiting->copy.make(source, progress) : Replaced::Refused;
  // Another folder can have the path since the one before was opened.
  const bool isElsewhere = made == Replaced::No && errno == EBUSY;
  if (made == Replaced::No && !isElsewhere) {
    fail(errorOnPath(NativePath(to), errno));
    return Outcome::Failed;
  }
  if (made != Replaced::Yes) {
    waiting.reset();
    return copyFile(from, to, failIfExists, progress) ? Outcome::Copied : Outcome::Failed;
  }
  if (state_->isOnOtherVolume(*waiting)) finish();
  state_->add(std::move(waiting), source.status.st_size);
  return Outcome::PutOff;
}

void GatheredCopies::finish() {
  const WaitingCopies copies = std::exchange(state_->copies, {});
  state_->targets = {};
  state_->bytes = 0;
  state_->isFull = false;
  const bool areCommitted = commitAll(copies);
  for (const auto& waiting : copies) {
    FileIdentity file;
    const bool isCommitted =
        areCommitted || commitContent(waiting->copy.descriptor()) || failWithErrno() != FALSE;
    const bool isDone = isCommitted && putInPlace(*waiting, file);
    state_->onEnd({.id = waiting->id,
                   .error = isDone ? DWORD{ERROR_SUCCESS} : GetLastError(),
                   .file = file,
                   .from = waiting->from,
                   .to = waiting->to});
  }
}

bool GatheredCopies::mayCause(DWORD error) const {
  return !state_->copies.empty() &&
         (error == ERROR_TOO_MANY_OPEN_FILES || error == ERROR_DISK_FULL);
}

const WrittenFiles& GatheredCopies::targets() const { return state_->targets; }

}  // namespace platform
