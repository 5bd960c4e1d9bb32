#include "file_tree.h"

#include <filesystem/files.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "links.h"
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
  explicit Walk(Links links) : links_(links) {}

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
    if (error) tree_.leftOut.push_back({name, "the directory cannot be read", true});
  }

  Tree takeTree() {
    for (auto* const paths : {&tree_.files, &tree_.links, &tree_.directories}) {
      std::sort(paths->begin(), paths->end());
    }
    return std::move(tree_);
  }

 private:
  void visit(const fs::directory_entry& entry, const std::string& name) {
    std::error_code error;
    if (links_ == Links::kListed && isKeptLink(entry.path())) {
      tree_.links.push_back(libraryPath(name));
    } else if (entry.is_directory(error)) {
      if (!entry.is_symlink(error) || !isCycle(entry.path())) {
        tree_.directories.push_back(libraryPath(name) + '\\');
        enter(entry.path(), name + static_cast<char>(fs::path::preferred_separator));
      }
    } else if (entry.is_regular_file(error)) {
      tree_.files.push_back(libraryPath(name));
    } else {
      tree_.leftOut.push_back({name, reasonOf(entry)});
    }
  }

  static std::string reasonOf(const fs::directory_entry& entry) {
    std::error_code error;
    if (entry.is_symlink(error) && !entry.exists(error)) return "it is a link without a target";
    return "it is neither a file nor a directory";
  }

  bool isCycle(const fs::path& directory) const {
    std::error_code error;
    return std::any_of(ancestors_.begin(), ancestors_.end(), [&](const fs::path& ancestor) {
      return fs::equivalent(ancestor, directory, error);
    });
  }

  const Links links_;
  std::vector<fs::path> ancestors_;
  Tree tree_;
};

}  // namespace

Tree filesBelow(const std::string& directory, Links links) {
  Walk walk(links);
  walk.enter(systemPath(directory), "");
  return walk.takeTree();
}

void reportLeftOut(const Tree& tree, Output& output) {
  for (const LeftOut& item : tree.leftOut) {
    const std::string name = item.path.empty() ? "." : item.path;
    output.fail("left out " + inQuotes(name) + ": " + item.reason);
  }
}

bool isSameFile(const std::string& a, const std::string& b) {
  std::error_code error;
  return fs::equivalent(systemPath(a), systemPath(b), error);
}

std::string readFailure(const std::string& path) {
  if (path.size() > kLongestPath) {
    return "its path has more than " + std::to_string(kLongestPath) + " bytes";
  }
  if (FileSystem::TestOpen(path.c_str(), FileSystem::kAccessRead) == 0) {
    return "it cannot be read, or another program uses it";
  }
  return "its name cannot be stored unchanged";
}
