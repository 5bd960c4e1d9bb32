#pragma once
// The command line: commands, arguments, options and help.

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "commands.h"

// The values of all arguments and options; each command uses some of them.
struct Options {
  std::string directory, zip, source, target, pattern, tag, attribute;
  std::vector<std::string> patterns;
  AddRequest add;
  EncryptionRequest encryption;
  PasswordSource password;
  unsigned int days = 0;
  bool isLong = false, isJson = false, noOverwrite = false, dryRun = false;
  Output output;
};

// Describes the whole command line. Parsing runs the command that it names.
void describe(CLI::App& app, Options& options);
