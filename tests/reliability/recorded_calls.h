#pragma once
// Records the changes that the library's system calls make in a directory, and their commits.

#include <map>
#include <string>
#include <vector>

namespace recording {

// Path relative to the directory, and the file's number.
using Names = std::map<std::string, int>;

// The number of the directory tree in an event.
inline constexpr int kTree = -1;

struct Event {
  int file = kTree;
  bool committed = false;  // of the file or tree, whose content has not changed
  std::string content;     // of the file, all of it
  Names names;             // of the tree
};

// Records the calls of the thread that creates it, during its lifetime. The first events describe
// the existing files. One at a time.
class Recorder {
 public:
  explicit Recorder(const std::string& folder);
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;
  ~Recorder();

  const std::vector<Event>& events() const { return events_; }

  // Called after a system call that succeeded.
  static void contentChanged(int descriptor);
  static void fileCreated(int descriptor);
  static void namesChanged();
  static void fileCommitted(int descriptor);
  static void allCommitted();

 private:
  void addContent(int file, const std::string& path);
  void addNames();
  bool covers(int descriptor) const;
  int numberOf(int descriptor);

  std::string folder_;
  std::vector<Event> events_;
  std::map<unsigned long, int> numbers_;  // by inode
  int files_ = 0;
};

}  // namespace recording
