#pragma once
// What the benchmarks work on, made once for each medium.

#include <string>
#include <vector>

namespace bench {

// The folder that one medium's roads work in; gone with its object.
class Workspace {
 public:
  // `scale` divides all amounts of work; 1 is the full size.
  Workspace(const std::string& folder, std::size_t scale);
  Workspace(const Workspace&) = delete;
  Workspace& operator=(const Workspace&) = delete;
  ~Workspace();

  // For each of 1, 2, 4 and 8 eighths of the work.

  // A tree of 20,000 source files in all; its folder, without separator.
  const std::string& tree(int eighths) const { return trees_.at(indexOf(eighths)); }
  // A folder that holds one file of 100 MB, of text or of random bytes.
  const std::string& text(int eighths) const { return texts_.at(indexOf(eighths)); }
  const std::string& noise(int eighths) const { return noises_.at(indexOf(eighths)); }
  // An archive of 10,000 or 100,000 entries of a few hundred bytes.
  const std::string& smallArchive(int eighths) const { return small_.at(indexOf(eighths)); }
  const std::string& largeArchive(int eighths) const { return large_.at(indexOf(eighths)); }

  // Work of that full size at the scale of this workspace.
  std::size_t scaled(std::size_t full) const { return full / scale_; }
  // A path of that name in the workspace.
  std::string path(const std::string& name) const { return folder_ + '/' + name; }
  // As path, where nothing is.
  std::string fresh(const std::string& name) const;
  // As fresh, where an empty folder is. On disk a former one of many files is only
  // put away: ext4 passes by the numbers of files that were deleted in the last
  // minutes, one by one, which takes longer than to make new ones.
  std::string emptyFolder(const std::string& name) const;

 private:
  static std::size_t indexOf(int eighths);

  std::string folder_;
  std::size_t scale_;
  bool inMemory_ = false;
  mutable int putAway_ = 0;  // folders
  std::vector<std::string> trees_, texts_, noises_, small_, large_;
};

// Text of that size out of source files.
std::string sourceText(std::size_t size);
// Name of entry number `i` of a generated archive.
std::string entryName(std::size_t i);

}  // namespace bench
