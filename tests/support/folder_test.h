#pragma once
// The fixture of tests that work in a folder of their own.

#include <gtest/gtest.h>

#include <string>

#include "support/programs.h"
#include "support/temporary_folder.h"

namespace support {

class FolderTest : public testing::Test {
 protected:
  void write(const std::string& name, const std::string& bytes) const {
    writeFile(folder_.file(name), bytes);
  }
  std::string read(const std::string& name) const { return readFile(folder_.file(name)); }
  bool exists(const std::string& name) const { return support::exists(folder_.file(name)); }

  // Other programs, which run in the folder and must succeed.
  void shell(const std::string& command) const {
    EXPECT_EQ(run(folder_.path(), command), 0) << command;
  }
  void python(const std::string& script) const {
    write("script.py", "import struct, sys, zipfile\n" + script);
    shell("python3 -W ignore script.py && rm script.py");
  }
  std::string output(const std::string& command) const { return outputOf(folder_.path(), command); }

  TemporaryFolder folder_;
};

}  // namespace support
