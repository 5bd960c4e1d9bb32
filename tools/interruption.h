#pragma once
// Requests to end the program, such as Ctrl-C.

// While an object exists, the first request does not end the program, so that a command can undo what
// it has begun; a second request does. At the end of the object the program ends as it would have
// without one. On Linux the requests are SIGINT, SIGTERM and SIGHUP, unless they are ignored; on
// Windows Ctrl-C and Ctrl-Break. There is one object at a time.
class Interruption {
 public:
  Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;
  ~Interruption();
};

// Reports whether the program was asked to end while an object existed. Can be called in every
// thread.
bool isInterrupted();
