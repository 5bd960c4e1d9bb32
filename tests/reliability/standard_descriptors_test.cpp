// Programs that closed their standard input, output and error. The system gives these numbers to
// the next files that are opened.

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "failing_calls.h"
#include "operations.h"
#include "support/linux/forked_process.h"
#include "support/temporary_folder.h"

namespace {

using operations::Operation;

void closeStandard() {
  for (int descriptor = 0; descriptor <= STDERR_FILENO; ++descriptor) close(descriptor);
}

// Keeps errno, by which a caller distinguishes the end of a directory from an error.
bool anyIsOpen() {
  const int before = errno;
  bool isOpen = false;
  for (int descriptor = 0; descriptor <= STDERR_FILENO; ++descriptor) {
    isOpen = isOpen || fcntl(descriptor, F_GETFD) != -1;
  }
  errno = before;
  return isOpen;
}

class StandardDescriptors : public testing::TestWithParam<Operation> {};

TEST_P(StandardDescriptors, AreNeverKept) {
  if (GetParam().is(operations::kLarge)) GTEST_SKIP() << "makes too many calls";
  const support::TemporaryFolder folder;
  const std::string home = folder.file("work/");
  operations::prepare(home, GetParam());
  support::ForkedProcess process([&](const auto&) {
    closeStandard();
    // Two calls move a descriptor: one makes the copy, the other closes the original.
    constexpr int kMoving = 2;
    int calls = 0;
    bool isKept = false;
    const failing::Failing failing(failing::Fault::Interruption, 1, [&] {
      calls = anyIsOpen() ? calls + 1 : 0;
      isKept = isKept || calls > kMoving;
    });
    if (!GetParam().run(home)) return 1;
    return isKept ? 2 : 0;
  });
  EXPECT_EQ(process.wait(), 0);
}

INSTANTIATE_TEST_SUITE_P(All, StandardDescriptors, testing::ValuesIn(operations::all()),
                         [](const auto& info) { return info.param.name; });

}  // namespace
