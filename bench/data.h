#pragma once
// The files that the benchmarks work on, created once for each medium.

#include <map>
#include <string>
#include <vector>

namespace bench {

// The directory that one medium's operations work in. Deleted with its object.
class Workspace {
 public:
  // `scale` divides all amounts of work; 1 is the full size.
  Workspace(const std::string& folder, std::size_t scale);
  Workspace(const Workspace&) = delete;
  Workspace& operator=(const Workspace&) = delete;
  ~Workspace();

  // For each of 1, 2, 4 and 8 eighths of the work.

  // The directory of a tree of 20,000 source files, without a trailing separator.
  const std::string& tree(int eighths) const { return trees_.at(indexOf(eighths)); }
  // A directory that contains one file of 100 MB, of text or of random bytes.
  const std::string& text(int eighths) const { return texts_.at(indexOf(eighths)); }
  const std::string& noise(int eighths) const { return noises_.at(indexOf(eighths)); }
  // An archive of so many entries of 500 bytes, at the scale of this workspace.
  const std::string& archive(std::size_t entries, int eighths) const;
  const std::string& smallArchive(int eighths) const { return archive(10'000, eighths); }
  const std::string& largeArchive(int eighths) const { return archive(100'000, eighths); }

  // Returns an amount of work at the scale of this workspace.
  std::size_t scaled(std::size_t full) const { return full / scale_; }
  std::size_t scaled(std::size_t full, int eighths) const {
    return scaled(full) / 8 * static_cast<std::size_t>(eighths);
  }
  // Returns a path in the workspace.
  std::string path(const std::string& name) const { return folder_ + '/' + name; }
  // As path(), after deleting a file or directory of that name.
  std::string fresh(const std::string& name) const;
  // As fresh(), for a new empty directory. On disk a former one with many files is renamed instead
  // of deleted: ext4 skips the inode numbers of recently deleted files one by one, which takes
  // longer than creating new files.
  std::string emptyFolder(const std::string& name) const;

 private:
  static std::size_t indexOf(int eighths);

  std::string folder_;
  std::size_t scale_;
  bool inMemory_ = false;
  mutable int renamed_ = 0;  // number of directories
  std::vector<std::string> trees_, texts_, noises_;
  mutable std::map<std::size_t, std::string> archives_;  // by the number of entries
};

// Returns text of a size, taken from source files.
std::string sourceText(std::size_t size);
// Returns the name of entry number `i` of a generated archive.
std::string entryName(std::size_t i);

}  // namespace bench
