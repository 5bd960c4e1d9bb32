#pragma once
// The variable TMPDIR, which names the folder for temporary files.

#include <cstdlib>
#include <filesystem>
#include <string>

namespace support {

// Sets the variable. The destructor restores the former folder.
class TemporaryVariable {
 public:
  explicit TemporaryVariable(const std::string& folder)
      : former_(std::filesystem::temp_directory_path()) {
    setenv("TMPDIR", folder.c_str(), 1);
  }
  TemporaryVariable(const TemporaryVariable&) = delete;
  TemporaryVariable& operator=(const TemporaryVariable&) = delete;
  ~TemporaryVariable() { setenv("TMPDIR", former_.c_str(), 1); }

 private:
  std::string former_;
};

}  // namespace support
