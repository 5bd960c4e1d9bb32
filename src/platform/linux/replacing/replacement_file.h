#pragma once
// A file that takes the place of another one once it is complete.
//
// The one way in which this library replaces files: copies, extracted entries and archives. What it
// keeps of the old file is described in carry_over.h.
//
//     ReplacementFile file({directory, name, status, &held}, ReplacementFile::Named::AtTheEnd);
//     if (file && file.keepsOwner() && ... write to file.descriptor() ... &&
//         file.complete() == Replaced::Yes) {
//       file.putInPlace();
//     }
//
// Network file systems differ from others in two ways. They keep what is written in memory and
// report a full disk when the file is closed, so the new version is closed before it is renamed.
// And an SMB client that is to rename over a file which it holds open deletes that file and reports
// EACCES. So the old file is closed before the rename there, and after a failed rename the new
// version is dropped only if the old file is proven to be there.

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>

#include "platform/linux/opening/descriptor.h"

namespace platform::native {

// What a new file takes the place of.
struct Place {
  int directory = -1;  // open
  std::string name;    // in the directory
  // Of the file or the link that has the name. A mode of 0 says that there is none; the new file
  // then replaces nothing.
  struct stat status {};
  // The file, open and locked against other replacements. Null if there is none, or a link.
  Descriptor* held = nullptr;
  // The permissions of the new file, in place of those that it takes over. It then has no access
  // control list of the old one.
  std::optional<std::uint32_t> mode{};
};

// The outcome of a step of a replacement.
enum class Replaced {
  Yes,
  Refused,  // the target, its directory or its owner permits no replacement, but perhaps writing
  No,       // errno says why
};

// True if a failed step shows that the directory or the owner does not permit a replacement. After
// another error, as that of a full disk, writing into the target could lose its content.
bool isRefusal(int error);

class ReplacementFile {
 public:
  // Whether the file has a name of its own from the beginning. If not, and if the file system
  // supports that, a killed process leaves nothing.
  enum class Named { AtTheEnd, Always };

  // Creates the file. It is accessible to its owner alone if the place is that of a file or has a
  // mode.
  ReplacementFile(const Place& place, Named named);
  ReplacementFile(const ReplacementFile&) = delete;
  ReplacementFile& operator=(const ReplacementFile&) = delete;
  // Deletes the file if it was not put in place.
  ~ReplacementFile();

  // True if the file could be created; if not, errno is set.
  explicit operator bool() const { return static_cast<bool>(file_); }
  int descriptor() const { return file_.get(); }
  // The name that the file has in the directory if it was created with one.
  const std::string& temporaryName() const { return temporaryName_; }
  // True if the file could be given the owner and the group of the old one.
  bool keepsOwner() const { return keepsOwner_; }
  // Reports whether it can have the access control list of the old one too.
  bool keepsAccess() const;

  // Gives the file all that it takes over from the old one, less the permissions `removed`. Returns
  // No, with EBUSY, if the name is no longer that of the old file.
  Replaced prepare(mode_t removed);
  // Does that without removing any permission, and commits the file to the disk.
  Replaced complete();
  // Closes the file and gives it the name of the old one. After a power failure either the old file
  // is there or the new one. On a network file system this closes the old file, also if the outcome
  // is Refused.
  Replaced putInPlace();

 private:
  bool hasOld() const { return place_.status.st_mode != 0; }
  bool createUnnamed(mode_t mode);
  bool createNamed(mode_t mode);
  bool link();
  template <typename Create>
  bool underFreeName(Create create);
  bool isLeftOver() const;
  bool carryOver(const struct stat& now, mode_t removed);
  bool setAccess(const struct stat& now, mode_t removed);
  bool moveToPlace();
  Replaced rename(const struct stat& own);
  bool isOldThere() const;
  void keepBeside();

  Place place_;
  std::string temporaryName_;
  bool isNamed_ = false;
  bool isRemote_ = false;
  bool keepsOwner_ = false;
  Descriptor file_;
};

// Reports whether a new file in the open directory `directory` can take the place of the file open
// in `held`, which has that name there, and keep its owner, group and access control list. False
// also if the file has several hard links or is a mount point.
bool canBeReplaced(int directory, const std::string& name, int held);

}  // namespace platform::native
