#pragma once
// A second process that does a part of a test.

#include <cstdint>
#include <functional>
#include <string>

namespace support {

// The second process reports to its parent through this.
class Channel {
 public:
  explicit Channel(std::intptr_t end) : end_(end) {}
  void reportReady() const;

 private:
  std::intptr_t end_;
};

// A part of a test that runs in a process of its own. Its result is the exit
// status. Tests of both platforms define it at namespace scope, with a name of its
// own, so that a program that was just started finds it.
struct Work {
  using Function = std::function<int(const std::string& argument, const Channel& channel)>;

  Work(const char* name, Function function);

  const char* name;
  Function function;
  const Work* next;
};

// Runs a work. Its parent can wait for its reportReady() with awaitReady(). The
// process is killed with its object.
class OtherProcess {
 public:
  OtherProcess(const Work& work, const std::string& argument);
  OtherProcess(const OtherProcess&) = delete;
  OtherProcess& operator=(const OtherProcess&) = delete;
  ~OtherProcess();

  // False if the child ended without a report.
  bool awaitReady() const;
  void kill();
  // Returns the exit status, or -1 if the child did not end by itself.
  int wait();

 private:
  std::intptr_t process_ = -1;
  std::intptr_t report_ = -1;
};

}  // namespace support
