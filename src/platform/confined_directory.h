#pragma once
// Files created below a directory under names that are not trusted.

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/file_metadata.h"
#include "platform/win32.h"
#include "platform/written_files.h"

namespace platform {

// A directory whose content is not trusted: a symbolic link in it may lead anywhere, and another
// process may put one in the way at any time. A check of the path before it is opened is therefore
// not enough. Each directory on the way to a file is opened from its open parent, as a directory
// and not as a link, and stays open while files are created in it.
class ConfinedDirectory {
 public:
  // Writes the content of a file to the handle. Returns false on failure.
  using Fill = std::function<bool(HANDLE)>;

  // What to do with an existing file or link.
  enum class Existing { Replaced, Kept };

  enum class Outcome {
    Written,
    Kept,      // a file or link has the name, and such are kept
    SameFile,  // the file is one that this object has written under another id
    Failed,    // the error is set on Linux
  };
  struct Result {
    Outcome outcome;
    WrittenFiles::Name former = WrittenFiles::kNone;  // the id of that file, for SameFile

    explicit operator bool() const { return outcome == Outcome::Written; }
  };

  // Opens an existing directory. Its own path is trusted and may contain links. `path` ends in a
  // separator, or is a drive or empty, so that a name can be appended to it.
  explicit ConfinedDirectory(const std::string& path);
  ~ConfinedDirectory();

  // True if the directory could be opened. If not, the error is set.
  explicit operator bool() const;

  // Remembers from now on which directories this object creates. `isNew` says that the directory itself
  // was created for what is written to it. False, with the error, on failure.
  bool rememberCreated(bool isNew);

  // Creates the file `name`, a path relative to the directory, and the missing directories on the
  // way to it. If `fill` fails, a new file is deleted again. Fails if the name contains a component
  // "..", passes through a link, or is that of a directory.
  //
  // An existing file or link of that name is kept, or it is replaced unless it is read-only or in
  // use; if `fill` fails, it is left unchanged. One that has to be kept is never touched, even if
  // another process creates it during the call.
  //
  // `id` represents the name: two names that lead to one file replace each other only if they have
  // the same id. Several hard links count as several files.
  //
  // The file gets the metadata. If that has a mode, no one can open the content at any instant whom
  // the mode keeps from it, and the file keeps no access control list of one that it replaces.
  Result write(std::string_view name, const Fill& fill, Existing existing = Existing::Replaced,
               WrittenFiles::Name id = 1, const NewMetadata& metadata = {});

  // Reads the target of a link, which is not empty and has no zero bytes. Returns false on failure.
  using ReadTarget = std::function<bool(std::string& target)>;
  // Creates a symbolic link in the same way. Nothing is asked of its target. The error is
  // ERROR_NOT_SUPPORTED where there are no links, as on Windows.
  Result writeLink(std::string_view name, const ReadTarget& read, Existing existing,
                   WrittenFiles::Name id, const NewMetadata& metadata);

  // Creates the directory `name`, a path relative to the directory, and the missing ones on the way
  // to it, unless they exist. Fails as write() does. If this object remembers that the directory
  // is new, finishDirectories() gives it the metadata. Until then its owner can fill it, and others
  // can do no more than the mode says.
  bool createDirectory(std::string_view name, const NewMetadata& metadata = {}, std::size_t id = 0);
  // Gives the created directories their metadata, each after those in it. Calls `failed(id)`, with
  // the error set, for each that cannot get it.
  void finishDirectories(const std::function<void(std::size_t id)>& failed);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace platform
