#pragma once
// The output of the program: results, details, warnings, failures.

#include <cstddef>
#include <stdexcept>
#include <string>

// Ends a command. The text is the line that the user reads.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A wrong use of the program, which the parser does not see.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Output {
 public:
  bool quiet = false;
  bool verbose = false;

  // Writes a line to standard output unless --quiet is set.
  void summary(const std::string& line) const;
  // Writes a line to standard output if --verbose is set.
  void detail(const std::string& line) const;
  // Writes a warning to standard error unless --quiet is set.
  void warn(const std::string& text) const;
  // Reports a failure after which the command continues.
  void fail(const std::string& text);

  // Number of failures reported so far.
  std::size_t failures() const { return failures_; }

 private:
  std::size_t failures_ = 0;
};
