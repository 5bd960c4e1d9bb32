#pragma once
// Passwords: from the command line, from a file, or asked for on a terminal.

#include <filesystem/archive.h>
#include <filesystem/zip_archive.h>

#include <string>
#include <vector>

#include "commands.h"

// The password of the source; empty if it has none. Warns of one on the command
// line, which other users can see.
std::string givenPassword(const PasswordSource& source, const Output& output);

// The password for reading the entries: the given one, or one that is asked for
// on the terminal if an entry is encrypted. Empty if there is none.
std::string passwordFor(const std::vector<FileSystem::Entry>& entries, const PasswordSource& source,
                        const Output& output);

// The password of new entries, empty for none, and their encryption.
struct NewPassword {
  std::string text;
  ZipArchive::Encryption encryption = ZipArchive::Encryption::Traditional;
};

// The password that the user gives or, if a method alone is given, types twice on the terminal.
// Throws Failure if there is no terminal to ask on, or if the library lacks the encryption.
NewPassword newPassword(const EncryptionRequest& request, const Output& output);
