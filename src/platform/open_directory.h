#pragma once
// An open directory, for walks that delete or copy.
//
// Deleting a tree by path is unsafe. Between the moment a walk lists the directory `tree\a` and the
// moment it deletes `tree\a\file`, another process can replace `a` with a link to any other
// directory, and the path then names a file there. An OpenDirectory is opened from its parent and
// never through a link, and its entries are examined and deleted relative to it. A walk therefore
// stays in the tree it started in, whatever happens to the names above it. It is also faster: the
// system does not follow the path of the directory once more for each entry.

#include <memory>
#include <optional>
#include <string>

#include "platform/copy_file.h"
#include "platform/file_identity.h"
#include "platform/win32.h"
#include "platform/written_files.h"

namespace platform {

class OpenDirectory {
 public:
  // What to do if the last component of a path is a link; links before it are followed.
  enum class LastLink { Followed, Refused };

  // Opens the directory at a path, which may end in a separator. If the path begins with that of
  // `above`, which may be null, the system follows only the rest of it.
  OpenDirectory(const std::string& path, LastLink link, const OpenDirectory* above = nullptr);
  // Opens a subdirectory by its storedName(). Fails if it is a link. `parent` must have been listed
  // to its end, and must outlive this object.
  OpenDirectory(OpenDirectory& parent, const std::string& storedName);
  // Creates the directory at a path unless it exists, and opens it as the first constructor does. It
  // follows a link of that name, but none that takes the place of a directory that was created. A
  // new directory is not read-only.
  static OpenDirectory make(const std::string& path, const OpenDirectory* above);
  OpenDirectory(OpenDirectory&&) noexcept;
  OpenDirectory& operator=(OpenDirectory&&) = delete;
  OpenDirectory(const OpenDirectory&) = delete;
  OpenDirectory& operator=(const OpenDirectory&) = delete;
  ~OpenDirectory();

  // True if the directory could be opened. If not, the constructor has set the error.
  explicit operator bool() const;
  // True if make() has created the directory.
  bool isNew() const;
  // Reads the identity of the open directory. Returns false on failure.
  bool identity(FileIdentity& identity) const;

  // Advances to the next entry, at first to the first one; `.` and `..` are left out. Returns false
  // at the end. Deleting entries does not disturb the listing.
  bool next();
  // After next() has returned false: reports whether there are no more entries. If not, the
  // directory cannot be read further.
  bool isComplete() const;

  // The current entry's name as paths spell it; empty if no path can name it.
  const char* name() const;
  // The current entry's name as the directory stores it, for the functions that take one.
  std::string storedName() const;
  // True if the current entry is a directory and no link to one.
  bool isDirectory() const;
  // True if the current entry is a link to a directory.
  bool leadsToDirectory() const;
  // True if the directory lists the current entry as a regular file, which is no link.
  bool isRegular() const;
  // Reports whether the current entry is a file that can be opened for reading now, as FileExists
  // does. If not, the error is set.
  bool canOpen() const;
  // Reads the time of the current entry's last write; that of a link is its target's.
  bool lastWrite(FILETIME& time) const;
  // Deletes the current entry, a file or a link, under the rules of DeleteFileA.
  bool deleteEntry();
  // Does the same if canOpen() is true now.
  bool deleteIfOpenable();
  // Reports whether deleteEntry() would delete the current entry now. If not, the error is set.
  bool canDelete() const;

  // Copies a file of `source`, listed as regular, to the same name here, as CopyFileA does, and
  // adds the copy to `written` as `id`. Returns false, and leaves no file, if the copy fails, and
  // with ERROR_FILE_EXISTS if the name is in use.
  bool copyNew(const OpenDirectory& source, const std::string& storedName, WrittenFiles& written,
               WrittenFiles::Name id, const CopyProgress& progress);
  // What has a name in the directory.
  struct Named {
    bool exists = false;
    // Of a file without other hard links, which can be one that was written under another name,
    // because the file system takes the two for one. Never known on Windows: source and target
    // distinguish the same names there.
    std::optional<FileIdentity> file{};
  };
  Named find(const std::string& storedName) const;
  // Adds the file of that name to the files.
  void addWritten(const std::string& storedName, WrittenFiles& written,
                  WrittenFiles::Name id) const;

  // Removes an empty subdirectory, but no link, under the rules of RemoveDirectoryA.
  bool removeDirectory(const std::string& storedName);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace platform
