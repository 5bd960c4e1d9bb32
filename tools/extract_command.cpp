// extract.

#include <filesystem/files.h>
#include <filesystem/path.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "archive.h"
#include "batch_extraction.h"
#include "commands.h"
#include "extraction.h"
#include "password.h"
#include "paths.h"
#include "progress.h"
#include "temporary_directory.h"
#include "terminal.h"
#include "text.h"

namespace {

bool isDirectoryName(const std::string& path) {
  return (!path.empty() && isSeparator(path.back())) || FileSystem::FolderExists(path.c_str()) != 0;
}

// Throws for an entry that the temporary directory at `path` could not take.
[[noreturn]] void throwNotSpooled(const Entry& entry, const std::string& path, bool hasPassword) {
  std::error_code error;
  const auto space = std::filesystem::space(systemPath(path).parent_path(), error);
  const bool isFull = !error && space.available < entry.record.size;
  throw Failure(
      "cannot extract " + inQuotes(entry.name) + ": " +
      (isFull ? "the temporary directory has no space for it" : readFailure(entry, hasPassword)));
}

// Writes a large entry by way of a file. Nothing of it is written before all of it is checked.
void spoolToStandardOutput(Archive& archive, const Entry& entry, bool hasPassword) {
  TemporaryDirectory temporary;
  const std::string path = temporary.file("entry");
  if (archive.zip().extract(entry.name.c_str(), path.c_str()) == 0) {
    throwNotSpooled(entry, path, hasPassword);
  }
  std::ifstream file(systemPath(path), std::ios::binary);
  temporary.remove();
  std::vector<char> block(1 << 20);
  do {
    file.read(block.data(), static_cast<std::streamsize>(block.size()));
    const auto count = static_cast<std::size_t>(file.gcount());
    if (std::fwrite(block.data(), 1, count, stdout) != count) {
      throw Failure("cannot write to standard output");
    }
  } while (file);
  if (!file.eof()) throw Failure("cannot read " + inQuotes(nativePath(path)));
}

void writeToStandardOutput(Archive& archive, const Entry& entry, bool hasPassword) {
  constexpr std::uint64_t kLargestInMemory = 128 << 20;
  if (entry.record.size > kLargestInMemory) {
    return spoolToStandardOutput(archive, entry, hasPassword);
  }
  std::vector<unsigned char> bytes;
  // An empty entry delivers no byte, which the library does not distinguish from
  // a failure.
  if (archive.zip().extract(entry.name.c_str(), bytes) == 0 && entry.record.size != 0) {
    throw Failure("cannot extract " + inQuotes(entry.name) + ": " +
                  readFailure(entry, hasPassword));
  }
  if (!bytes.empty()) std::fwrite(bytes.data(), 1, bytes.size(), stdout);
}

// The entries that the pattern selects, without directories. Of entries of the
// same name only the last can be extracted.
std::vector<Entry> selectedFiles(const Archive& archive, const std::string& pattern) {
  const std::vector<Entry> all = archive.entries();
  std::vector<Entry> files;
  const std::vector<bool> isLast = lastOfNames(all);
  for (const std::size_t i : selectEntries(archive.names(), {pattern}, archive.path())) {
    if (!all[i].isDirectory() && isLast[i]) files.push_back(all[i]);
  }
  if (files.empty()) throw Failure(inQuotes(pattern) + " selects only directories");
  return files;
}

void extractToFile(Archive& archive, const Entry& entry, const std::string& target,
                   bool hasPassword) {
  const std::string file = isDirectoryName(target) ? withBackslash(creatablePath(target)) +
                                                         FileSystem::extractFilename(entry.name)
                                                   : creatablePath(target);
  if (archive.zip().extract(entry.name.c_str(), file.c_str()) == 0) {
    throw Failure("cannot extract " + inQuotes(entry.name) + ": " +
                  extractionFailure(archive, entry, file, hasPassword));
  }
}

}  // namespace

void extract(const std::string& zip, const std::string& pattern, const std::string& target,
             const PasswordSource& password, Output& output) {
  Archive archive(zip, FileSystem::kAccessRead);
  const std::vector<Entry> entries = selectedFiles(archive, pattern);
  const std::string text = passwordFor(entries, password, output);
  archive.zip().password(text.c_str());
  std::uint64_t bytes = 0;
  for (const Entry& entry : entries) bytes += entry.record.size;
  Progress progress(output, "extracting " + pattern, bytes);
  const bool hasWildcards = pattern.find_first_of("*?") != std::string::npos;
  if (target == "-") {
    passBytes(stdout);
    for (const Entry& entry : entries) writeToStandardOutput(archive, entry, !text.empty());
  } else if (entries.size() == 1 && (!hasWildcards || entries[0].name == pattern)) {
    extractToFile(archive, entries[0], target, !text.empty());
    output.detail("extracted " + printable(entries[0].name));
  } else {
    const std::string base = withBackslash(creatablePath(target));
    BatchExtraction extraction(archive, base, ZipArchive::ExistingFiles::Replace, !text.empty(),
                               output);
    extraction.run(entries, progress);
  }
}
