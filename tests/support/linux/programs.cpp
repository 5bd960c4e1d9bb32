#include "support/programs.h"

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>

namespace support {

int run(const std::filesystem::path& folder, const std::string& command) {
  const std::string line = "cd '" + folder.string() + "' && { " + command + " ; } >/dev/null 2>&1";
  const int status = std::system(line.c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string outputOf(const std::filesystem::path& folder, const std::string& command) {
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

}  // namespace support
