#pragma once
// A second process that runs a function of the test, for what two processes do
// to each other.

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>

namespace support {

// Runs `work` in a child process. The child says `ready` by tell() and its
// parent waits for that with awaitReady(). Killed with its object.
class ForkedProcess {
 public:
  class Channel {
   public:
    explicit Channel(int descriptor) : descriptor_(descriptor) {}
    void tell() const {
      const char byte = 1;
      [[maybe_unused]] const ssize_t count = write(descriptor_, &byte, 1);
    }

   private:
    int descriptor_;
  };

  // The result of `work` is the child's exit status.
  explicit ForkedProcess(const std::function<int(const Channel&)>& work) {
    int ends[2];
    if (pipe(ends) != 0) return;
    process_ = fork();
    if (process_ == 0) {
      close(ends[0]);
      _exit(work(Channel(ends[1])));
    }
    close(ends[1]);
    told_ = ends[0];
  }
  ForkedProcess(const ForkedProcess&) = delete;
  ForkedProcess& operator=(const ForkedProcess&) = delete;
  ~ForkedProcess() {
    kill();
    if (told_ >= 0) close(told_);
  }

  // False if the child ended without a word.
  bool awaitReady() const {
    char byte;
    return read(told_, &byte, 1) == 1;
  }
  void kill() {
    if (process_ <= 0) return;
    ::kill(process_, SIGKILL);
    wait();
  }
  // The exit status, or -1 if the child did not end by itself.
  int wait() {
    if (process_ <= 0) return -1;
    int status = 0;
    waitpid(process_, &status, 0);
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  pid_t process_ = -1;
  int told_ = -1;
};

}  // namespace support
