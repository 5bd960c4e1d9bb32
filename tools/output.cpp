#include "output.h"

#include <cstdio>

#include "terminal.h"

namespace {

void writeLine(std::FILE* stream, const char* prefix, const std::string& line) {
  // A line of progress may be on the terminal.
  if (isTerminal(stream)) clearLine(stream);
  std::fprintf(stream, "%s%s\n", prefix, line.c_str());
}

}  // namespace

void Output::summary(const std::string& line) const {
  if (!quiet) writeLine(stdout, "", line);
}

void Output::detail(const std::string& line) const {
  if (verbose) writeLine(stdout, "", line);
}

void Output::warn(const std::string& text) const {
  if (!quiet) writeLine(stderr, "vesk-fs: warning: ", text);
}

void Output::fail(const std::string& text) {
  ++failures_;
  writeLine(stderr, "vesk-fs: ", text);
}
