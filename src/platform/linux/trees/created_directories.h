#pragma once
// The directories that an extraction has created, and what they get when all in them is complete.

#include <sys/stat.h>

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/file_metadata.h"
#include "platform/linux/opening/descriptor.h"

namespace platform::native {

// Returns the mode with which a directory is created: its owner can fill it.
inline mode_t modeWhileFilled(const NewMetadata& metadata) {
  constexpr mode_t kPermissions = 0777;
  return metadata.mode ? (*metadata.mode & kPermissions) | S_IRWXU : kPermissions;
}

class CreatedDirectories {
 public:
  // Notes that the open directory was created. False, with errno, on failure.
  bool add(int directory);
  // Notes what the directory at `path`, open in `directory`, gets in the end if it was created, and
  // takes the permissions away from it that it does not get. False, with errno, on failure.
  bool choose(int directory, const std::string& path, const NewMetadata& metadata, std::size_t id);

  // Gives each directory what it gets, those in it before it. `open(path)` opens one for reading; -1
  // with the error on failure. Calls `failed(id)`, with the error, where that fails.
  void finish(const std::function<Descriptor(const std::string&)>& open,
              const std::function<void(std::size_t)>& failed);

 private:
  struct Chosen {
    std::string path;
    NewMetadata metadata;
    std::size_t id;
  };

  bool has(const struct stat& status) const {
    return created_.count({status.st_dev, status.st_ino}) != 0;
  }

  std::set<std::pair<dev_t, ino_t>> created_;
  std::vector<Chosen> chosen_;
};

}  // namespace platform::native
