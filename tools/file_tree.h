#pragma once
// Files and directory trees as the system shows them. The library does not report
// the files that its listings leave out.

#include <cstddef>
#include <string>
#include <vector>

#include "output.h"

// A path that a walk left out, relative to its start, in the form of this system.
struct LeftOut {
  std::string path;
  std::string reason;
  bool isDirectory = false;
};

// Paths relative to the start, in the library's form, sorted.
struct Tree {
  std::vector<std::string> files;
  std::vector<std::string> links;
  std::vector<std::string> directories;  // with separators at their ends
  std::vector<LeftOut> leftOut;          // directories that cannot be read, and what is no file
};

enum class Links {
  kFollowed,  // except to a directory that the link is in
  kListed,
};

// Walks a directory.
Tree filesBelow(const std::string& directory, Links links);

// Reports each path that a walk left out as a failure.
void reportLeftOut(const Tree& tree, Output& output);

// True if both paths exist and are the same file.
bool isSameFile(const std::string& a, const std::string& b);

// The longest path that the library's listings have, in bytes.
inline constexpr std::size_t kLongestPath = 259;

// Why the library could not read or store a file that exists.
std::string readFailure(const std::string& path);
