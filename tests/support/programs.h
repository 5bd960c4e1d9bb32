#pragma once
// Other programs, run through the shell.

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace support {

// Exit status of a shell command in a folder, its output thrown away; -1 if it
// did not end by itself.
inline int run(const std::filesystem::path& folder, const std::string& command) {
  const std::string line = "cd '" + folder.string() + "' && { " + command + " ; } >/dev/null 2>&1";
  const int status = std::system(line.c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// What a shell command in a folder writes to standard output.
inline std::string outputOf(const std::filesystem::path& folder, const std::string& command) {
  const std::string line = "cd '" + folder.string() + "' && " + command;
  std::string output;
  FILE* const pipe = popen(line.c_str(), "r");
  if (pipe == nullptr) return output;
  std::array<char, 4096> block;
  while (const std::size_t count = std::fread(block.data(), 1, block.size(), pipe)) {
    output.append(block.data(), count);
  }
  pclose(pipe);
  return output;
}

// A program that takes zip archives apart and checks all of one.
struct Checker {
  const char* name;
  const char* command;  // behind it comes the archive
};

inline constexpr Checker kCheckers[] = {
    {"unzip", "unzip -P secret -tqq"},
    {"7z", "7z t -psecret"},
    {"zipfile",
     "python3 -c 'import sys, zipfile; z = zipfile.ZipFile(sys.argv[1]); "
     "z.setpassword(b\"secret\");"
     " sys.exit(z.testzip() is not None)'"},
};

}  // namespace support
