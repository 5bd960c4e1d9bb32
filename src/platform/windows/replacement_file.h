#pragma once
// A file that takes the place of another one once it is complete.

#include <string>
#include <vector>

#include "platform/file_metadata.h"
#include "platform/unique_handle.h"
#include "platform/win32.h"

namespace platform {

// What the file that replaces another one needs to know of it: the access rights, the attributes
// and the time of creation, which it keeps. Its owner is whoever replaces it.
class OriginalFile {
 public:
  // Reads them from a handle with GENERIC_READ.
  explicit OriginalFile(HANDLE file);

  // False if they could not be read; the error is set.
  explicit operator bool() const { return valid_; }
  bool isLink() const { return hasAny(FILE_ATTRIBUTE_REPARSE_POINT); }
  // False on a file system without access rights.
  bool hasRights() const { return !rights_.empty(); }
  bool hasOneName() const { return information_.nNumberOfLinks == 1; }
  // Reports whether the handle is of the same file, and no one has written to it since.
  bool isUnchanged(HANDLE file) const;

  const BY_HANDLE_FILE_INFORMATION& information() const { return information_; }
  PSECURITY_DESCRIPTOR rights() const { return const_cast<unsigned char*>(rights_.data()); }

 private:
  bool hasAny(DWORD attributes) const { return (information_.dwFileAttributes & attributes) != 0; }

  BY_HANDLE_FILE_INFORMATION information_{};
  std::vector<unsigned char> rights_;
  bool valid_ = false;
};

// The file is hidden until it is complete, and is deleted with its object if it does not get in
// place.
class ReplacementFile {
 public:
  // Creates the file beside `path`. It has the access rights of `original` from the beginning; null
  // for those that the directory gives to a new file. It also deletes what killed processes left in
  // the directory.
  ReplacementFile(const std::string& path, const OriginalFile* original);
  ReplacementFile(const ReplacementFile&) = delete;
  ReplacementFile& operator=(const ReplacementFile&) = delete;
  ~ReplacementFile();

  // False if the file could not be created; the error is set.
  explicit operator bool() const { return !name_.empty(); }
  const std::string& name() const { return name_; }
  HANDLE handle() const { return file_.get(); }
  // Closes the file, so that it can be written under its name.
  bool close();

  // Sets the attributes and the time that the file gets in place of those of a new one.
  void setMetadata(const NewMetadata& metadata);
  // Gives the file the attributes of the original, commits it to the disk and closes it.
  bool complete();
  // Renames the completed file and commits the name. An existing file is replaced in the same step
  // if `replaces`; no handle of it may be open. If that fails and left no file at the path, the new
  // one is kept beside it.
  bool putInPlace(bool replaces);
  // Renames the completed file to a free name that shows which file it is. The temporary name is
  // deleted a day later if the process is killed.
  void giveLastingName();
  // Leaves the file beside the path.
  void keep() { name_.clear(); }

 private:
  bool create(const std::string& folder, const OriginalFile* original);
  bool setAttributes();
  bool renameToFree(const std::string& name);

  std::string path_;
  std::string name_;  // empty if there is none
  FileHandle file_;
  FILE_BASIC_INFO final_{};
};

// Returns the path of the open file, which differs from `path` if that is a symbolic link. A rename
// would replace the link.
std::string pathWithoutLink(const std::string& path, HANDLE file);

// True if a failed step of a replacement shows that the file's folder or other processes do not
// permit one; writing into the file may still be possible.
bool isRefusal(DWORD error);

}  // namespace platform
