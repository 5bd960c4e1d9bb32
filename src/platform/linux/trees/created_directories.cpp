#include "platform/linux/trees/created_directories.h"

#include <fcntl.h>

#include <algorithm>

#include "platform/linux/metadata/new_metadata.h"
#include "platform/linux/opening/existing_file.h"
#include "platform/linux/system/last_error.h"

namespace platform::native {
namespace {

// The set-group-id bit of a new directory is that of its parent.
bool apply(int directory, const struct stat& status, NewMetadata metadata) {
  if (metadata.mode) *metadata.mode |= status.st_mode & S_ISGID;
  return applyLastWrite(directory, metadata, status.st_mtim) &&
         applyMode(directory, metadata.mode, status.st_mode);
}

}  // namespace

bool CreatedDirectories::add(int directory) {
  struct stat status;
  if (fstat(directory, &status) != 0) return false;
  created_.insert({status.st_dev, status.st_ino});
  return true;
}

bool CreatedDirectories::choose(int directory, const std::string& path, const NewMetadata& metadata,
                                std::size_t id) {
  struct stat status;
  if (fstat(directory, &status) != 0) return false;
  if (!has(status)) return true;
  chosen_.push_back({path, metadata, id});
  const mode_t limited = status.st_mode & (modeWhileFilled(metadata) | ~mode_t{0777});
  if (limited == status.st_mode) return true;
  const Descriptor opened(openRetrying(directory, ".", O_RDONLY | O_DIRECTORY));
  return opened && applyMode(opened.get(), limited, status.st_mode);
}

void CreatedDirectories::finish(const std::function<Descriptor(const std::string&)>& open,
                                const std::function<void(std::size_t)>& failed) {
  // The path of a directory is longer than those of the directories above it.
  std::stable_sort(chosen_.begin(), chosen_.end(),
                   [](const Chosen& a, const Chosen& b) { return a.path.size() > b.path.size(); });
  for (const Chosen& chosen : std::exchange(chosen_, {})) {
    const Descriptor directory = open(chosen.path);
    struct stat status;
    const bool isKnown = directory && fstat(directory.get(), &status) == 0;
    if (isKnown && !has(status)) {
      fail(ERROR_PATH_NOT_FOUND);
    } else if (isKnown && apply(directory.get(), status, chosen.metadata)) {
      continue;
    } else if (directory) {
      failWithErrno();
    }
    failed(chosen.id);
  }
}

}  // namespace platform::native
