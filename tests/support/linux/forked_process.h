#pragma once
// A second process that runs a function of the test.

#include <functional>

#include "support/other_process.h"

namespace support {

// Runs `work` in a child process, whose exit status is its result.
class ForkedProcess : public OtherProcess {
 public:
  using Channel = support::Channel;

  explicit ForkedProcess(const std::function<int(const Channel&)>& work)
      : OtherProcess(Work("forked", [&](const std::string&,
                                        const Channel& channel) { return work(channel); }),
                     "") {}
};

}  // namespace support
