#pragma once
// Files created below a directory under names that are not trusted.

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/win32.h"

namespace platform {

// A directory whose content is not trusted: a symbolic link in it may lead anywhere, and another
// process may put one in the way at any time. A check of the path before it is opened is therefore
// not enough. Each directory on the way to a file is opened from its open parent, as a directory
// and not as a link, and stays open while files are created in it.
class ConfinedDirectory {
 public:
  // Writes the content of a file to the handle. Returns false on failure.
  using Fill = std::function<bool(HANDLE)>;

  // Opens an existing directory. Its own path is trusted and may contain links. `path` ends in a
  // separator, or is a drive or empty, so that a name can be appended to it.
  explicit ConfinedDirectory(const std::string& path);
  ~ConfinedDirectory();

  // True if the directory could be opened.
  explicit operator bool() const;

  // Creates the file `name`, a path relative to the directory, and the missing directories on the
  // way to it. An existing file or link of that name is replaced, unless it is read-only or in use;
  // if `fill` fails, it is left unchanged, and a new file is deleted again. Fails if the name
  // contains a component "..", passes through a link, or is that of a directory. Fails on Linux if
  // the file system takes the name for another one under which this object has written the existing
  // file.
  bool write(std::string_view name, const Fill& fill);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace platform
