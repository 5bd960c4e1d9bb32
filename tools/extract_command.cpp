// extract.

#include <filesystem/files.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <unordered_set>

#include "archive_reading.h"
#include "commands.h"
#include "password.h"
#include "paths.h"
#include "progress.h"
#include "temporary_directory.h"
#include "terminal.h"
#include "text.h"
#include "unpacking.h"

using FileSystem::Entry;
using FileSystem::Reason;

namespace {

bool isDirectoryName(const std::string& path) {
  return (!path.empty() && isSeparator(path.back())) || FileSystem::FolderExists(path.c_str()) != 0;
}

[[noreturn]] void throwFailure(const Entry& entry, Reason reason) {
  throw Failure("cannot extract " + inQuotes(entry.name) + ": " + failureText(entry, reason));
}

// Writes a large entry by way of a file. Nothing of it is written before all of it is checked.
void spoolToStandardOutput(const FileSystem::Archive& archive, const Entry& entry,
                           const FileSystem::Options& options) {
  TemporaryDirectory temporary;
  const std::string path = temporary.file("entry");
  const Reason reason = archive.extract(entry, path.c_str(), options);
  if (reason == Reason::DiskFull) {
    throw Failure("cannot extract " + inQuotes(entry.name) +
                  ": the temporary directory has no space for it");
  }
  if (reason != Reason::None) throwFailure(entry, reason);
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

void writeToStandardOutput(const FileSystem::Archive& archive, const Entry& entry,
                           const FileSystem::Options& options) {
  constexpr std::uint64_t kLargestInMemory = 128 << 20;
  if (entry.size > kLargestInMemory) return spoolToStandardOutput(archive, entry, options);
  std::vector<unsigned char> bytes;
  const Reason reason = archive.readAll(entry, bytes, options);
  if (reason != Reason::None) throwFailure(entry, reason);
  if (!bytes.empty()) std::fwrite(bytes.data(), 1, bytes.size(), stdout);
}

// The entries that the pattern selects, without directories. Of entries of the same name the last
// is extracted.
std::vector<Entry> selectedFiles(const FileSystem::Archive& archive, const std::string& pattern,
                                 const std::string& zip) {
  const std::vector<Entry> selected = selectEntries(archive.entries(), {pattern}, zip);
  std::vector<Entry> files;
  std::unordered_set<std::string_view> names;
  for (auto entry = selected.rbegin(); entry != selected.rend(); ++entry) {
    if (!entry->isFolder && names.insert(entry->name).second) files.push_back(*entry);
  }
  if (files.empty()) throw Failure(inQuotes(pattern) + " selects only directories");
  std::reverse(files.begin(), files.end());
  return files;
}

void extractToFile(const FileSystem::Archive& archive, const Entry& entry,
                   const std::string& target, const FileSystem::Options& options) {
  const std::string file =
      isDirectoryName(target)
          ? withBackslash(target) + entry.name.substr(entry.name.find_last_of("\\/") + 1)
          : target;
  const Reason reason = archive.extract(entry, file.c_str(), options);
  if (reason != Reason::None) throwFailure(entry, reason);
}

}  // namespace

void extract(const std::string& zip, const std::string& pattern, const std::string& target,
             const PasswordSource& source, const KeptRequest& kept, Output& output) {
  const FileSystem::Archive archive = openArchive(zip);
  const std::vector<Entry> entries = selectedFiles(archive, pattern, zip);
  FileSystem::Options options;
  options.setPassword(passwordFor(entries, source, output));
  keep(kept, options);
  Progress progress(output, "extracting " + pattern);
  options.setProgress(progress.callback());
  const bool hasWildcards = pattern.find_first_of("*?") != std::string::npos;
  if (target == "-") {
    passBytes(stdout);
    for (const Entry& entry : entries) writeToStandardOutput(archive, entry, options);
  } else if (entries.size() == 1 && (!hasWildcards || entries[0].name == pattern)) {
    extractToFile(archive, entries[0], target, options);
    output.detail("extracted " + printable(entries[0].name));
  } else {
    const Unpacked result = unpackEntries(archive, entries, target, options, progress, output);
    for (const Entry& entry : result.withoutPassword) {
      output.fail("cannot extract " + inQuotes(entry.name) + ": " +
                  failureText(entry, Reason::PasswordMissing));
    }
  }
}
