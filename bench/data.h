#pragma once
// The files that the benchmarks work on, created once for each medium.

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
  // An archive of 10,000 or 100,000 entries of a few hundred bytes.
  const std::string& smallArchive(int eighths) const { return small_.at(indexOf(eighths)); }
  const std::string& largeArchive(int eighths) const { return large_.at(indexOf(eighths)); }

  // Returns an amount of work at the scale of this workspace.
  std::size_t scaled(std::size_t full) const { return full / scale_; }
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
  std::vector<std::string> trees_, texts_, noises_, small_, large_;
};

// Returns text of a size, taken from source files.
std::string sourceText(std::size_t size);
// Returns the name of entry number `i` of a generated archive.
std::string entryName(std::size_t i);

}  // namespace bench
