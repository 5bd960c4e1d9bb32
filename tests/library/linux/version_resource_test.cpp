// The parser of executable files, against damage.

#include <filesystem/files.h>
#include <gtest/gtest.h>

#include <string>

#include "support/temporary_folder.h"

namespace {

using namespace FileSystem;

std::string data(const std::string& name) {
  return std::string(VESK_TEST_DATA "/version/") + name + ".dll";
}

// Every cut, and every byte changed: a right text, another one, or none.
TEST(VersionResourceOnLinux, LiesDoNoHarm) {
  const support::TemporaryFolder folder;
  const std::string path = folder.file("lie.dll");
  const std::string whole = support::readFile(data("special3"));
  ASSERT_GT(whole.size(), 1000U);
  CString version;
  for (std::size_t size = 0; size < whole.size(); size += 7) {
    support::writeFile(path, whole.substr(0, size));
    FormatVersion(path.c_str(), version);
  }
  for (std::size_t at = 0; at < whole.size(); ++at) {
    if (whole[at] == 0 && at % 4 != 3) continue;
    for (const char lie : {'\x7F', '\xFF', '\x00'}) {
      std::string bytes = whole;
      bytes[at] = lie;
      support::writeFile(path, bytes);
      FormatVersion(path.c_str(), version);
    }
  }
  support::writeFile(path, whole);
  EXPECT_EQ(FormatVersion(path.c_str(), version), 1);
}

}  // namespace
