#include "recorded_calls.h"

#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <filesystem>

#include "support/temporary_folder.h"

namespace recording {
namespace {

Recorder* active = nullptr;

// Keeps the recorder's own system calls out of the record.
class Pause {
 public:
  Pause() : recorder_(active) { active = nullptr; }
  Pause(const Pause&) = delete;
  Pause& operator=(const Pause&) = delete;
  ~Pause() { active = recorder_; }

  Recorder* operator->() const { return recorder_; }
  explicit operator bool() const { return recorder_ != nullptr; }

 private:
  Recorder* recorder_;
};

struct stat statusOf(int descriptor) {
  struct stat status {};
  fstat(descriptor, &status);
  return status;
}

std::string pathOf(int descriptor) { return "/proc/self/fd/" + std::to_string(descriptor); }

}  // namespace

Recorder::Recorder(const std::string& folder) : folder_(folder) {
  for (const auto& item : std::filesystem::recursive_directory_iterator(folder)) {
    struct stat status {};
    if (!item.is_regular_file() || stat(item.path().c_str(), &status) != 0) continue;
    numbers_[status.st_ino] = files_;
    addContent(files_++, item.path().string());
  }
  addNames();
  active = this;
}

Recorder::~Recorder() { active = nullptr; }

void Recorder::addContent(int file, const std::string& path) {
  events_.push_back({.file = file, .content = support::readFile(path), .names = {}});
}

void Recorder::addNames() {
  Names names;
  for (const auto& item : std::filesystem::recursive_directory_iterator(folder_)) {
    struct stat status {};
    if (!item.is_regular_file() || stat(item.path().c_str(), &status) != 0) continue;
    names[item.path().lexically_relative(folder_).string()] = numbers_.at(status.st_ino);
  }
  events_.push_back({.content = {}, .names = names});
}

bool Recorder::covers(int descriptor) const {
  char path[PATH_MAX] = {};
  return readlink(pathOf(descriptor).c_str(), path, sizeof(path) - 1) > 0 &&
         std::string(path).starts_with(folder_);
}

int Recorder::numberOf(int descriptor) { return numbers_.at(statusOf(descriptor).st_ino); }

void contentChanged(int descriptor) {
  const Pause recorder;
  if (!recorder || !recorder->covers(descriptor)) return;
  recorder->addContent(recorder->numberOf(descriptor), pathOf(descriptor));
}

void fileCreated(int descriptor) {
  const Pause recorder;
  if (!recorder || !recorder->covers(descriptor)) return;
  // The inode may be that of a deleted file.
  const int number = recorder->files_++;
  recorder->numbers_[statusOf(descriptor).st_ino] = number;
  recorder->addContent(number, pathOf(descriptor));
  recorder->addNames();
}

void namesChanged() {
  const Pause recorder;
  if (recorder) recorder->addNames();
}

void fileCommitted(int descriptor) {
  const Pause recorder;
  if (!recorder || !recorder->covers(descriptor)) return;
  const bool tree = S_ISDIR(statusOf(descriptor).st_mode);
  recorder->events_.push_back({.file = tree ? kTree : recorder->numberOf(descriptor),
                               .committed = true,
                               .content = {},
                               .names = {}});
}

}  // namespace recording
