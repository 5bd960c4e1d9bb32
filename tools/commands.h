#pragma once
// The commands of vesk-fs, one function each. They work through the library's
// exported interface and throw Failure; a failure after which they continue is
// reported through Output.

#include <string>
#include <vector>

#include "kept.h"
#include "output.h"

// How the user gives a password. At most one of the two texts is not empty.
struct PasswordSource {
  std::string text;
  std::string file;
};

// How the user asks for encryption of new entries.
struct EncryptionRequest {
  std::string method;  // "aes256", "traditional", or empty: traditional if there is a password
  PasswordSource password;
};

// How the user wants new entries to be compressed. Empty texts are for the defaults.
struct CompressionRequest {
  std::string method;     // "deflate" or "zstd"
  std::string level;      // a digit
  unsigned int jobs = 0;  // how many workers compress; 0 for one a processor
};

enum class ListFormat { kNames, kTable, kJson };

// Packs a directory with all below it into a new archive.
void pack(const std::string& directory, const std::string& zip, const EncryptionRequest& encryption,
          const CompressionRequest& compression, const KeptRequest& kept, Output& output);

// Unpacks all entries into a directory. Continues after an entry that fails.
void unpack(const std::string& zip, const std::string& directory, bool overwrite,
            const PasswordSource& password, const KeptRequest& kept, Output& output);

// Lists the entries that the patterns select, or all without patterns.
void list(const std::string& zip, const std::vector<std::string>& patterns, ListFormat format);

// Reads and checks every entry; writes nothing.
void test(const std::string& zip, const PasswordSource& password, Output& output);

struct AddRequest {
  std::string zip;                 // created if it does not exist
  std::vector<std::string> files;  // files and directories, or `-` for standard input
  std::string name;                // of the entry of a single file; empty for the default
  EncryptionRequest encryption;
  CompressionRequest compression;
  KeptRequest kept;
};
void add(const AddRequest& request, Output& output);

// Removes the entries that the patterns select.
void remove(const std::string& zip, const std::vector<std::string>& patterns, Output& output);

// Extracts one entry to a file or into a directory, the entries that a pattern
// with wildcards selects into a directory, or either to standard output (`-`).
void extract(const std::string& zip, const std::string& pattern, const std::string& target,
             const PasswordSource& password, const KeptRequest& kept, Output& output);

// Writes the paths of all files below a directory whose names match a pattern.
void tree(const std::string& directory, const std::string& pattern, Output& output);

// Copies a file, or everything in a directory, into the directory `target`.
void copy(const std::string& source, const std::string& target, Output& output);

// Deletes old files; a dry run writes their paths instead.
void sweep(const std::string& directory, unsigned int days, bool dryRun, Output& output);

// Writes the version text of an executable.
void version(const std::string& file);

// Writes the content of an element, or of its attribute unless that is empty.
void xmlGet(const std::string& file, const std::string& tag, const std::string& attribute);
