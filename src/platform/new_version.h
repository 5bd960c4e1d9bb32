#pragma once
// A new version of a file that is written beside it.

#include <memory>
#include <string>

namespace platform {

// Replaces a file in three steps: lock it, write the new version to another file of the same
// directory, and rename that one. Until the rename the file keeps its content, also if the process
// is killed or the power fails. No other process can use the file meanwhile. A file that does not
// exist yet is created in the same way.
class NewVersion {
 public:
  // Locks the file at `path`, if there is one, and deletes what a killed process left of a new
  // version. The path may lead through links.
  explicit NewVersion(const std::string& path);
  NewVersion(const NewVersion&) = delete;
  NewVersion& operator=(const NewVersion&) = delete;
  // Deletes the new version if it was not put in place.
  ~NewVersion();

  // False if there is a file that cannot be replaced: it is in use or read-only, or is a directory.
  explicit operator bool() const;

  // Reports whether a complete new file can take the place of the old one and keep its owner,
  // group, permissions and access control list. False also if the old file has several hard links,
  // which would no longer be one file, and if its directory does not accept new files. True if
  // there is no file yet. Creates a file for a moment, and deletes it.
  bool canReplace() const;

  // Creates the file to which the new version is written, empty, and returns its path. That is the
  // file itself, with its lock released, if its directory does not accept new files; no file is
  // created then. Empty on failure.
  std::string create();
  // True if create() returned the file's own path. Who writes there commits it to the disk.
  bool isInPlace() const;
  // Commits the new version to the disk, renames it, with the owner and the permissions of the old
  // one, and commits the name. Does nothing if the file is written in place. False on failure; the
  // old version then remains.
  bool putInPlace();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace platform
