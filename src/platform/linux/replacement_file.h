#pragma once
// A file that takes the place of another one once it is complete.

#include <sys/stat.h>

#include <string>

#include "platform/linux/descriptor.h"

namespace platform::native {

// True if a failed step of a replacement shows that the target's folder or owner does not permit
// one; writing into the target is possible then. After another error, as that of a full disk, it
// could lose the content.
bool isRefusal(int error);

// The name that the replacement of a file with the status `old` has for an instant.
std::string temporaryNameFor(const struct stat& old);

// The file has no name until then where the file system supports that (O_TMPFILE), and is deleted
// with its object if it never gets one. A link needs a free name before a rename can put it in
// place, so for an instant the file is called `.~copyINODE.tmp`, after the inode it replaces. That
// inode stays the same until a replacement succeeds, so the next attempt deletes what a process
// killed in that instant left.
class ReplacementFile {
 public:
  // Creates the file in the open directory `directory`, to replace a file with the status `old`.
  ReplacementFile(int directory, const struct stat& old, mode_t mode);
  ReplacementFile(const ReplacementFile&) = delete;
  ReplacementFile& operator=(const ReplacementFile&) = delete;
  ~ReplacementFile();

  // True if the file could be created; if not, errno is set.
  explicit operator bool() const { return static_cast<bool>(file_); }
  int descriptor() const { return file_.get(); }

  // Commits the content to the disk and renames the file to `name` in its directory, replacing that
  // one. After a power failure either the old file is there or the new one. False, with errno, on
  // failure.
  bool putInPlace(const char* name);

 private:
  bool link();

  int directory_;
  std::string temporaryName_;
  bool named_ = false;
  Descriptor file_;
};

// Reports whether a new file in the open directory `directory` can replace the file open in `held`
// and keep its owner, group, permissions and access control list.
bool canBeReplaced(int directory, int held);

}  // namespace platform::native
