#pragma once
// Copying one file over another, for CopyFileA and replaceFile.

#include <sys/stat.h>

#include <memory>
#include <optional>
#include <string>

#include "platform/copy_file.h"
#include "platform/file_identity.h"
#include "platform/linux/names/native_path.h"
#include "platform/linux/opening/descriptor.h"
#include "platform/linux/replacing/replacement_file.h"
#include "platform/unique_handle.h"

namespace platform::native {

struct Source {
  platform::FileHandle handle;
  int descriptor = -1;
  struct stat status {};
};

// Finds the file that a path leads to, past a link of its name: its native path and its status. Most
// names are no links and need no resolution. False, with errno, on failure.
bool findFile(const NativePath& path, std::string& file, struct stat& status);

// Opens a file to be copied. False, with the error, on failure.
bool openSource(const char* text, Source& source);

// The treatment of a target that other handles hold.
enum class HeldTarget {
  Overwrite,  // it gets the new content in place, if its holders share writing
  Replace,    // it is replaced all the same, if its holders only read and share writing
};

// An existing file that a copy takes the place of.
struct Target {
  std::string path;  // native; that of the file itself if the name is a link
  struct stat status {};
  Descriptor held;  // open for writing; denies writing to others unless isShared
  HeldTarget whenHeld = HeldTarget::Overwrite;
  bool isShared = false;  // must be overwritten in place, because others hold it
};

// The outcome of opening a target. With Failed the error is set.
enum class TargetState { Ready, Missing, Changed, Failed };

// Opens and locks the file that the path leads to, if a copy of the source may
// take its place. Changed if another process replaced the file at the same time.
TargetState lockTarget(const NativePath& path, const Source& source, Target& target);

// Does the same without locking it. Changed also if others hold it.
TargetState openTarget(const NativePath& path, const Source& source, Target& target);

// An open folder.
struct Folder {
  std::string path;
  Descriptor descriptor;
};

// A complete copy of a file beside the one that it is to replace.
class WholeCopy {
 public:
  // `target` is open. It must outlive the object, and be locked when that goes in its place.
  explicit WholeCopy(Target& target) : target_(target) {}
  WholeCopy(const WholeCopy&) = delete;
  WholeCopy& operator=(const WholeCopy&) = delete;

  // Takes the open folder of another copy, before make(), if the target is in it too.
  void shareFolderOf(const WholeCopy& other) { folder_ = other.folder_; }
  // Makes the copy, with all that it takes over from the target. Its write time is that of the
  // source.
  Replaced make(const Source& source, const CopyProgress& progress);
  int descriptor() const { return file_->descriptor(); }
  // True if the copy has a name, which a killed process leaves.
  bool isNamed() const { return !file_->temporaryName().empty(); }
  FileIdentity identity() const;
  // Takes the place of the target, once the copy is on the disk. With Refused the target may have
  // been closed.
  Replaced putInPlace();
  // Deletes the copy and closes the target.
  void drop() {
    file_.reset();
    closeTarget();
  }

  // Closes the target, for a copy that waits before it goes in its place.
  void closeTarget() { target_.held = Descriptor(); }
  // Opens and locks the target again. False if it is not as it was, or if others hold it.
  bool lockTargetAgain();

 private:
  Target& target_;
  std::shared_ptr<const Folder> folder_;
  std::optional<ReplacementFile> file_;
};

// Reports whether a complete copy may take the place of the target.
bool isReplaceable(const Target& target);

// Gives the target the content and the write time of the source. The target keeps
// its owner, permissions and access control list, but becomes read-only if the
// source is. It is replaced by a complete copy. It is overwritten in place if
// others hold it, if it has several hard links, or if its folder or its owner
// permits no replacement. False, with errno, on failure; only a failure in place
// can have changed the target. `progress` ends only the copying to a new file.
bool copyOver(const Source& source, Target& target, const CopyProgress& progress = {});

// Copies the source to a new file. False with errno EEXIST, and nothing read, if
// the name is in use. A file that could not be completed is deleted.
bool copyToNew(const Source& source, const NativePath& path, const CopyProgress& progress);

}  // namespace platform::native
