#pragma once
// A new file that is filled.

#include <sys/stat.h>

#include "platform/copy_file.h"
#include "platform/linux/opening/descriptor.h"

namespace platform::native {

// Creates a file under a name that must be free, and deletes it again unless it is completed.
// Network file systems keep what is written in memory and report a full disk only when the file is
// closed, so a file counts as complete when its close() has succeeded, not before.
class NewFile {
 public:
  // Creates the file `name` in the open directory `directory`, or AT_FDCWD. A link of that name is
  // not followed. `name` must outlive the object.
  NewFile(int directory, const char* name, mode_t mode);
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  // Deletes the file if close() has not succeeded. Keeps errno.
  ~NewFile();

  // True if the file could be created. If not, errno is set: EEXIST if the name is in use.
  explicit operator bool() const { return isIncomplete_; }
  int descriptor() const { return file_.get(); }
  // The open file, for its locks.
  Descriptor& held() { return file_; }
  // The status of the file when it was created.
  const struct stat& status() const { return status_; }

  // Gives the file the content, the write time and the read-only attribute of an open file with the
  // status `source`, and closes it. Keeps everyone else from it meanwhile. False, with errno, on
  // failure.
  bool copyFrom(int descriptor, const struct stat& source, const CopyProgress& progress);
  // Closes the file, which then stays. False, with errno, if the system reports that content could
  // not be written.
  bool close();

 private:
  bool makeReadOnly() const;
  void remove() const;

  int directory_;
  const char* name_;
  Descriptor file_;
  struct stat status_ {};
  bool isIncomplete_ = false;
};

}  // namespace platform::native
