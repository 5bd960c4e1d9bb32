// extract.

#include <filesystem/files.h>
#include <filesystem/path.h>

#include <cstdio>

#include "archive.h"
#include "commands.h"
#include "extraction.h"
#include "password.h"
#include "paths.h"
#include "progress.h"
#include "terminal.h"
#include "text.h"

namespace {

bool isDirectoryName(const std::string& path) {
  return (!path.empty() && isSeparator(path.back())) || FileSystem::FolderExists(path.c_str()) != 0;
}

void writeToStandardOutput(Archive& archive, const Entry& entry, bool hasPassword) {
  std::vector<unsigned char> bytes;
  // An empty entry delivers no byte, which the library does not distinguish from
  // a failure.
  if (archive.zip().extract(entry.name.c_str(), bytes) == 0 && entry.record.size != 0) {
    throw Failure("cannot extract " + inQuotes(entry.name) + ": " +
                  readFailure(entry, hasPassword));
  }
  std::fwrite(bytes.data(), 1, bytes.size(), stdout);
}

// The file that an entry is extracted to: its whole path under the directory if a
// pattern selected it, its last component otherwise.
std::string targetOf(const Entry& entry, const std::string& directory, bool isPattern) {
  if (isPattern) return directory + entry.name;
  return directory + FileSystem::extractFilename(entry.name);
}

}  // namespace

void extract(const std::string& zip, const std::string& pattern, const std::string& target,
             const PasswordSource& password, Output& output) {
  Archive archive(zip, FileSystem::kAccessRead);
  std::vector<Entry> all = archive.entries();
  std::vector<Entry> entries;
  for (const std::size_t i : selectEntries(archive.names(), {pattern}, zip)) {
    entries.push_back(std::move(all[i]));
  }
  const std::string text = passwordFor(entries, password, output);
  archive.zip().password(text.c_str());
  const bool hasPassword = !text.empty();
  const bool toStandardOutput = target == "-";
  const bool isPattern = pattern.find_first_of("*?") != std::string::npos &&
                         (entries.size() != 1 || entries[0].name != pattern);
  const bool intoDirectory = isPattern || isDirectoryName(target);
  const std::string base = intoDirectory ? withBackslash(creatablePath(target)) : "";
  Progress progress(output, "extracting " + pattern);
  if (toStandardOutput) passBytes(stdout);
  for (const Entry& entry : entries) {
    if (entry.isDirectory()) continue;
    if (toStandardOutput) {
      writeToStandardOutput(archive, entry, hasPassword);
      continue;
    }
    const std::string file =
        intoDirectory ? targetOf(entry, base, isPattern) : creatablePath(target);
    const bool isExtracted = isPattern
                                 ? archive.zip().extract(std::vector{entry.name}, base.c_str()) != 0
                                 : archive.zip().extract(entry.name.c_str(), file.c_str()) != 0;
    if (isExtracted) {
      output.detail("extracted " + printable(entry.name));
    } else {
      output.fail("cannot extract " + inQuotes(entry.name) + ": " +
                  extractionFailure(archive, entry, file, hasPassword));
    }
  }
}
