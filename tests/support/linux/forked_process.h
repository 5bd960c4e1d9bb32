#pragma once
// A second process that runs a function of the test.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>

namespace support {

// Runs `work(reportReady)` in a child process, whose exit status is its result. The process is
// killed with its object.
class ForkedProcess {
 public:
  explicit ForkedProcess(const std::function<int(const std::function<void()>&)>& work) {
    int ends[2];
    if (pipe(ends) != 0) return;
    process_ = fork();
    if (process_ == 0) {
      close(ends[0]);
      _exit(work([&] { [[maybe_unused]] const ssize_t count = write(ends[1], "r", 1); }));
    }
    close(ends[1]);
    report_ = ends[0];
  }
  ForkedProcess(const ForkedProcess&) = delete;
  ForkedProcess& operator=(const ForkedProcess&) = delete;
  ~ForkedProcess() {
    kill();
    if (report_ >= 0) close(report_);
  }

  // Waits until the child reports, False if it ended without a report.
  bool awaitReady() const {
    char byte;
    return read(report_, &byte, 1) == 1;
  }
  void kill() {
    if (process_ <= 0) return;
    ::kill(process_, SIGKILL);
    wait();
  }
  // Returns the exit status, or -1 if the child did not end by itself.
  int wait() {
    if (process_ <= 0) return -1;
    int status = 0;
    waitpid(process_, &status, 0);
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  pid_t process_ = -1;
  int report_ = -1;
};

// Returns the result of `work` in a child process that has a limit of a resource.
inline bool within(__rlimit_resource resource, rlim_t size, const std::function<bool()>& work) {
  ForkedProcess process([&](const auto&) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{size, size};
    setrlimit(resource, &limit);
    return work() ? 1 : 0;
  });
  const int status = process.wait();
  EXPECT_GE(status, 0) << "killed";
  return status == 1;
}

// The same where files cannot grow beyond a size, as on a disk that is full.
inline bool withinSize(rlim_t size, const std::function<bool()>& work) {
  return within(RLIMIT_FSIZE, size, work);
}

}  // namespace support
