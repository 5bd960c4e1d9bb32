// vesk-fs: the library's main jobs on a command line.

#include <cstdio>
#include <exception>
#include <new>
#include <string>

#include "options.h"
#include "terminal.h"
#include "text.h"

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

// The command that the user has named, with the name of the program.
std::string commandText(const CLI::App& app) {
  std::string text = "vesk-fs";
  for (const CLI::App* current = &app; !current->get_subcommands().empty();) {
    current = current->get_subcommands()[0];
    text += ' ' + current->get_name();
  }
  return text;
}

// Describes the error of a command line.
std::string usageText(const CLI::App& app, const std::string& error) {
  const std::vector<std::string> unknown = app.remaining(true);
  if (unknown.empty()) return app.get_subcommands().empty() ? "a command is required" : error;
  if (unknown[0].size() > 1 && unknown[0][0] == '-')
    return "unknown option " + inQuotes(unknown[0]);
  if (app.get_subcommands().empty()) return "unknown command " + inQuotes(unknown[0]);
  return "unexpected argument " + inQuotes(unknown[0]);
}

int run(int argc, char** argv) {
  Options options;
  CLI::App app("Files, directories and zip archives through the Vesk FileSystem library.",
               "vesk-fs");
  // A path may begin with a slash, on Windows too.
  app.allow_windows_style_options(false);
  describe(app, options);
  std::string usage;
  try {
    app.parse(argc, argv);
    if (app.get_subcommands().empty()) usage = usageText(app, "");
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);  // --help, --version
    usage = usageText(app, error.what());
  } catch (const UsageError& error) {
    usage = error.what();
  }
  if (!usage.empty()) {
    std::fprintf(stderr, "vesk-fs: %s (see %s --help)\n", usage.c_str(), commandText(app).c_str());
    return kWrongUsage;
  }
  return options.output.failures() == 0 ? 0 : kFailed;
}

}  // namespace

int main(int argc, char** argv) try {
  prepareConsole();
  const int status = run(argc, argv);
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
