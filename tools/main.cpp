// vesk-fs: the library's main jobs on a command line.

#include <cstdio>
#include <exception>
#include <new>
#include <string>
#include <vector>

#include "options.h"
#include "terminal.h"

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

int run(const std::vector<std::string>& words) {
  Options options;
  const Program program = describe(options);
  CommandLine line(program);
  try {
    line.read(words);
    if (options.help || options.version) {
      std::fputs(options.help ? line.help().c_str() : "vesk-fs " VESK_VERSION "\n", stdout);
      return 0;
    }
    line.run();
  } catch (const UsageError& error) {
    std::fprintf(stderr, "vesk-fs: %s (see %s --help)\n", error.what(), line.commandName().c_str());
    return kWrongUsage;
  }
  return options.output.failures() == 0 ? 0 : kFailed;
}

}  // namespace

int main(int argc, char** argv) try {
  prepareConsole();
  const int status = run({argv + 1, argv + argc});
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return status;
  std::fputs("vesk-fs: cannot write to standard output\n", stderr);
  return kFailed;
} catch (const std::bad_alloc&) {
  std::fputs("vesk-fs: there is not enough memory\n", stderr);
  return kFailed;
} catch (const std::exception& error) {
  std::fprintf(stderr, "vesk-fs: %s\n", error.what());
  return kFailed;
}
