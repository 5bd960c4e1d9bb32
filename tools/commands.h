#pragma once
// The commands of vesk-fs. Each does its job through the library's exported
// interface and throws Failure, whose text is the line that the user reads.

#include <stdexcept>
#include <string>

class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The path without the separators at its end, but for those of a root: the
// library puts a backslash behind a `/`, and the two would begin a server's name.
std::string withoutEndSeparators(std::string path);

// The path as the library makes folders for it: a relative one gets `.\` in
// front, because its first component counts as given, and doubled separators
// behind the start become one, because they would begin a server's name. None
// is left at the end.
std::string madeReady(const std::string& path);

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

// A file is copied into the folder `target`; of a folder all that it holds is.
void copy(const std::string& source, const std::string& target);
// Deletes old files as eraseOldFile does; a dry run writes their paths instead.
void sweep(const std::string& folder, unsigned int days, bool dryRun);
// Writes the version text of an executable.
void version(const std::string& file);

// Writes the content of an element, or of its attribute unless that is empty.
void xmlGet(const std::string& file, const std::string& tag, const std::string& attribute);
