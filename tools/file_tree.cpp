#include "file_tree.h"

#include <filesystem/files.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "paths.h"
#include "text.h"

namespace {

namespace fs = std::filesystem;

// The text of a path in the code page of the program.
std::string textOf(const fs::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

class Walk {
 public:
  explicit Walk(Output& output) : output_(output) {}

  // Collects the files below a directory. `name` is put before their paths.
  void enter(const fs::path& directory, const std::string& name) {
    std::error_code error;
    fs::directory_iterator entries(directory, error);
    ancestors_.push_back(directory);
    while (!error && entries != fs::directory_iterator()) {
      visit(*entries, name + textOf(entries->path().filename()));
      entries.increment(error);
    }
    ancestors_.pop_back();
    if (error) output_.fail("left out " + inQuotes(name) + ": the directory cannot be read");
  }

  std::vector<std::string> takeFiles() { return std::move(files_); }

 private:
  void visit(const fs::directory_entry& entry, const std::string& name) {
    std::error_code error;
    if (entry.is_directory(error)) {
      if (!entry.is_symlink(error) || !isCycle(entry.path())) {
        enter(entry.path(), name + static_cast<char>(fs::path::preferred_separator));
      }
    } else if (entry.is_regular_file(error)) {
      files_.push_back(libraryPath(name));
    } else {
      output_.warn("left out " + inQuotes(name) + ": it is neither a file nor a directory");
    }
  }

  bool isCycle(const fs::path& directory) const {
    std::error_code error;
    return std::any_of(ancestors_.begin(), ancestors_.end(), [&](const fs::path& ancestor) {
      return fs::equivalent(ancestor, directory, error);
    });
  }

  Output& output_;
  std::vector<fs::path> ancestors_;
  std::vector<std::string> files_;
};

}  // namespace

std::vector<std::string> filesBelow(const std::string& directory, Output& output) {
  Walk walk(output);
  walk.enter(systemPath(directory), "");
  std::vector<std::string> files = walk.takeFiles();
  std::sort(files.begin(), files.end());
  return files;
}

std::uint64_t fileSize(const std::string& path) {
  std::error_code error;
  const std::uint64_t size = fs::file_size(systemPath(path), error);
  return error ? 0 : size;
}

std::optional<fs::file_time_type> writeTime(const std::string& path) {
  std::error_code error;
  const fs::file_time_type time = fs::last_write_time(systemPath(path), error);
  return error ? std::nullopt : std::optional(time);
}

bool isSameFile(const std::string& a, const std::string& b) {
  std::error_code error;
  return fs::equivalent(systemPath(a), systemPath(b), error);
}

std::string readFailure(const std::string& path) {
  constexpr std::size_t kLongestPath = 259;
  if (path.size() > kLongestPath) {
    return "its path has more than " + std::to_string(kLongestPath) + " bytes";
  }
  if (FileSystem::TestOpen(path.c_str(), FileSystem::kAccessRead) == 0) {
    return "it cannot be read, or another program uses it";
  }
  return "its name cannot be stored unchanged";
}
