#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <string>

#include "engine/entries.h"
#include "support/linux/forked_process.h"
#include "support/temporary_folder.h"

namespace {

using namespace entries;

// A limit of the file's size takes the part of a full disk.
TEST(FullDisk, RestoresEveryByte) {
  const support::TemporaryFolder folder;
  const std::string path = folder.file("a.zip");
  writeArchive(path, {{"kept", noise(50000, 9)}});
  const std::string before = support::readFile(path);
  for (const std::size_t added : {10000U, 3000000U, 20000000U}) {
    for (const std::size_t space : {0U, 30U, 5000U}) {
      support::ForkedProcess process([&](const auto&) {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{before.size() + space, before.size() + space};
        setrlimit(RLIMIT_FSIZE, &limit);
        ZipWriter* const writer = ZipOpenWriter(path.c_str(), ZipModeAppend);
        addEntry(writer, "new", noise(added, 10));
        return ZipCloseWriter(writer, nullptr) < 0 ? 7 : 0;
      });
      const int status = process.wait();
      // Without space for the new entry only the entry fails.
      EXPECT_TRUE(status == 7 || status == 0);
      EXPECT_EQ(readArchive(path), (Entries{{"kept", noise(50000, 9)}}));
      if (status == 7) {
        EXPECT_TRUE(support::readFile(path) == before) << added << ' ' << space;
      }
    }
  }
}

}  // namespace
