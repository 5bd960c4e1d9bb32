#pragma once
// Differences between the platforms and between file systems, so that no test checks which one it
// runs on. The values are in each platform's folder.

#include <ctime>
#include <filesystem>
#include <string>
#include <string_view>

namespace support {

struct Platform {
  // Every text can be a name; otherwise those of Western Europe's code pages.
  bool everyName;
  // A program that is found along the search path.
  const char* program;
  // The progress of a copy is reported within a file. Wine reports it at the end.
  bool copiesInBlocks;
};

extern const Platform kPlatform;

// What the file system of the temporary folder can do.
struct FileSystem {
  // Two names that differ in letter case alone are two files.
  bool exactCase;
  // A file can be a symbolic link, or a FIFO.
  bool links;
  bool fifos;
  // A name can have any character but a slash.
  bool anyName;
  // Owners and all bits of the permissions are kept, not only whether a file is read-only.
  bool modes;
  // Files of more than 4 GB exist, and need no space where nothing was written.
  bool largeFiles;
  // Write times are multiples of this number of nanoseconds.
  long timeStep;
  // Two files can exchange their names.
  bool exchange;
  // New versions of several files wait for one commit.
  bool commonCommit;
};

// Finds out by trying, in the first call.
const FileSystem& fileSystem();

// Creates a folder for this test alone and returns its path.
std::string makeTemporaryFolder();

// Converts paths to and from the process code page, which the library uses.
std::string textOf(const std::filesystem::path& path);
std::filesystem::path pathOf(const std::string& text);
inline std::string text(std::string_view utf8) {
  return textOf(std::filesystem::path(std::u8string(utf8.begin(), utf8.end())));
}

// Since 1970, in UTC.
void setWriteTime(const std::string& file, std::time_t seconds, long nanoseconds = 0);

// How far local time is ahead of UTC at a moment, in seconds; two hours where
// the time zone can be set.
class TwoHoursEast {
 public:
  TwoHoursEast();
  TwoHoursEast(const TwoHoursEast&) = delete;
  TwoHoursEast& operator=(const TwoHoursEast&) = delete;
  ~TwoHoursEast();
  double seconds() const;
};

}  // namespace support
