#include "recorded_calls.h"

#include <sys/stat.h>

#include <climits>
#include <utility>

#include "support/temporary_folder.h"

namespace recording {
namespace {

thread_local Recorder* active = nullptr;

// Calls `work(recorder)` if there is a recorder, whose own system calls are not recorded.
template <typename Work>
void record(Work work) {
  Recorder* const recorder = std::exchange(active, nullptr);
  if (recorder != nullptr) work(*recorder);
  active = recorder;
}

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
  // With the separator the folder itself is covered too.
  return readlink(pathOf(descriptor).c_str(), path, sizeof(path) - 1) > 0 &&
         (std::string(path) + '/').starts_with(folder_);
}

int Recorder::numberOf(int descriptor) { return numbers_.at(statusOf(descriptor).st_ino); }

void Recorder::contentChanged(int descriptor) {
  record([&](Recorder& recorder) {
    if (recorder.covers(descriptor)) {
      recorder.addContent(recorder.numberOf(descriptor), pathOf(descriptor));
    }
  });
}

void Recorder::fileCreated(int descriptor) {
  record([&](Recorder& recorder) {
    if (!recorder.covers(descriptor)) return;
    // The inode may be that of a deleted file.
    const int number = recorder.numbers_[statusOf(descriptor).st_ino] = recorder.files_++;
    recorder.addContent(number, pathOf(descriptor));
    recorder.addNames();
  });
}

void Recorder::namesChanged() {
  record([](Recorder& recorder) { recorder.addNames(); });
}

void Recorder::fileCommitted(int descriptor) {
  record([&](Recorder& recorder) {
    if (!recorder.covers(descriptor)) return;
    const bool isTree = S_ISDIR(statusOf(descriptor).st_mode);
    recorder.events_.push_back({.file = isTree ? kTree : recorder.numberOf(descriptor),
                                .committed = true,
                                .content = {},
                                .names = {}});
  });
}

void Recorder::allCommitted() {
  record([](Recorder& recorder) {
    for (int file = kTree; file < recorder.files_; ++file) {
      recorder.events_.push_back({.file = file, .committed = true, .content = {}, .names = {}});
    }
  });
}

}  // namespace recording
