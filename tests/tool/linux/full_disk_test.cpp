#include <gtest/gtest.h>

#include <string>

#include "support/programs.h"
#include "support/temporary_folder.h"

namespace {

// A file size limit plays the full disk.
TEST(VeskFsOnLinux, FullDiskIsAFailure) {
  const support::TemporaryFolder folder;
  for (int i = 0; i < 50; ++i) {
    ASSERT_EQ(support::run(folder.path(),
                           "mkdir -p in && head -c 100000 /dev/urandom >in/" + std::to_string(i)),
              0);
  }
  const std::string limited = "sh -c 'trap \"\" XFSZ; ulimit -f 1000; exec " VESK_FS;
  EXPECT_EQ(support::run(folder.path(), limited + " pack in small.zip'"), 1);
  // What went in before is whole.
  EXPECT_EQ(support::run(folder.path(), "7z t small.zip"), 0);
  ASSERT_EQ(support::run(folder.path(), VESK_FS " pack in a.zip"), 0);
  const std::string before = support::readFile(folder.file("a.zip"));
  support::writeFile(folder.file("more"), std::string(3000, 'x'));
  EXPECT_EQ(support::run(folder.path(), limited + " add a.zip more'"), 1);
  EXPECT_TRUE(support::readFile(folder.file("a.zip")) == before);
}

}  // namespace
