#pragma once
// Other programs, run through the shell.

#include <filesystem>
#include <string>

namespace support {

// Exit status of a shell command in a folder, its output thrown away; -1 if it
// did not end by itself.
int run(const std::filesystem::path& folder, const std::string& command);

// Returns the standard output of a shell command that runs in a folder.
std::string outputOf(const std::filesystem::path& folder, const std::string& command);

// Commands that take the zip archive apart whose path follows, and check all of it.
inline constexpr const char* kCheckers[] = {
    "unzip -P secret -tqq ",
    "7z t -psecret ",
    ("python3 -c 'import sys, zipfile; z = zipfile.ZipFile(sys.argv[1]);"
     " z.setpassword(b\"secret\"); sys.exit(z.testzip() is not None)' "),
};

}  // namespace support
