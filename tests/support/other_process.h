#pragma once
// A second process that does a part of a test, for what two processes do to
// each other.

#include <cstdint>
#include <string>

namespace support {

// What the second process tells its parent by.
class Channel {
 public:
  explicit Channel(std::intptr_t end) : end_(end) {}
  void tell() const;

 private:
  std::intptr_t end_;
};

// A part of a test that runs in a process of its own; its result is the exit
// status. To be defined at namespace scope, with a name of its own, so that a
// freshly started program finds it.
struct Work {
  using Function = int (*)(const std::string& argument, const Channel& channel);

  Work(const char* name, Function function);

  const char* name;
  Function function;
  const Work* next;
};

// Runs a work. It says `ready` by tell() and its parent waits for that with
// awaitReady(). Killed with its object.
class OtherProcess {
 public:
  OtherProcess(const Work& work, const std::string& argument);
  OtherProcess(const OtherProcess&) = delete;
  OtherProcess& operator=(const OtherProcess&) = delete;
  ~OtherProcess();

  // False if the child ended without a word.
  bool awaitReady() const;
  void kill();
  // The exit status, or -1 if the child did not end by itself.
  int wait();

 private:
  std::intptr_t process_ = -1;
  std::intptr_t told_ = -1;
};

}  // namespace support
