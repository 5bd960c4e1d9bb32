#include "support/other_process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <utility>

namespace support {

void Channel::reportReady() const {
  const char byte = 1;
  [[maybe_unused]] const ssize_t count = write(static_cast<int>(end_), &byte, 1);
}

Work::Work(const char* ownName, Function ownFunction)
    : name(ownName), function(std::move(ownFunction)), next(nullptr) {}

OtherProcess::OtherProcess(const Work& work, const std::string& argument) {
  int ends[2];
  if (pipe(ends) != 0) return;
  process_ = fork();
  if (process_ == 0) {
    close(ends[0]);
    _exit(work.function(argument, Channel(ends[1])));
  }
  close(ends[1]);
  report_ = ends[0];
}

OtherProcess::~OtherProcess() {
  kill();
  if (report_ >= 0) close(static_cast<int>(report_));
}

bool OtherProcess::awaitReady() const {
  char byte;
  return read(static_cast<int>(report_), &byte, 1) == 1;
}

void OtherProcess::kill() {
  if (process_ <= 0) return;
  ::kill(static_cast<pid_t>(process_), SIGKILL);
  wait();
}

int OtherProcess::wait() {
  if (process_ <= 0) return -1;
  int status = 0;
  waitpid(static_cast<pid_t>(process_), &status, 0);
  process_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace support
