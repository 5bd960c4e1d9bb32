#pragma once
// The commands of vesk-fs. Each does its job through the library's exported
// interface and throws Failure, whose text is the line that the user reads.

#include <stdexcept>
#include <string>

class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

void pack(const std::string& folder, const std::string& zip);
void unpack(const std::string& zip, const std::string& folder);
void list(const std::string& zip);
// An empty name stands for the file's own; the archive is made if it is missing.
void add(const std::string& zip, const std::string& file, const std::string& name,
         const std::string& password);
void remove(const std::string& zip, const std::string& name);
void extract(const std::string& zip, const std::string& name, const std::string& target,
             const std::string& password);

// Writes the paths of all files below the folder.
void tree(const std::string& folder, const std::string& pattern);
