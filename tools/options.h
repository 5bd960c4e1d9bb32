#pragma once
// The commands of vesk-fs with their arguments, options and help.

#include <string>
#include <vector>

#include "command_line.h"
#include "commands.h"

// The values of all arguments and options; each command uses some of them.
struct Options {
  std::string directory, zip, source, target, pattern, tag, attribute;
  std::vector<std::string> patterns;
  AddRequest add;
  EncryptionRequest encryption;
  CompressionRequest compression;
  PasswordSource password;
  KeptRequest kept;
  unsigned int days = 0;
  bool isLong = false, isJson = false, noOverwrite = false, dryRun = false;
  bool help = false, version = false;
  Output output;
};

// Describes the whole command line, whose values go into `options`.
Program describe(Options& options);
