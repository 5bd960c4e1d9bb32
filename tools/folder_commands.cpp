// tree, copy, sweep.

#include <filesystem/enumeration.h>
#include <filesystem/files.h>
#include <filesystem/path.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "commands.h"
#include "file_identity.h"
#include "file_tree.h"
#include "paths.h"
#include "progress.h"
#include "terminal.h"
#include "text.h"
#include "wildcard.h"

namespace {

void requireDirectory(const std::string& directory) {
  if (FileSystem::FolderExists(directory.c_str()) == 0) {
    throw Failure("there is no directory " + inQuotes(directory));
  }
}

// Writes a path for other programs, or on a terminal without characters that act on it.
void writePath(const std::string& path) {
  const std::string native = nativePath(path);
  std::printf("%s\n", isTerminal(stdout) ? printable(native).c_str() : native.c_str());
}

// True if the library lists the file where the pattern matches its name.
bool isListable(const std::string& path) {
  return path.size() <= kLongestPath &&
         FileSystem::TestOpen(path.c_str(), FileSystem::kAccessRead) != 0;
}

std::string lowerCase(std::string text) {
  for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 0x20) : c;
  return text;
}

// Reports whether the library's listing takes the file's name for one of the pattern, as far as
// that can be said without its rules: a pattern that ends in a dot may select any name.
bool selects(const std::string& pattern, const std::string& file) {
  if (pattern == "*.*" || pattern.ends_with('.')) return true;
  return matches(lowerCase(pattern), lowerCase(FileSystem::extractFilename(file)));
}

// A sweep takes only temporary files of the directory itself, and all files below it.
bool isSwept(const std::string& file) {
  return file.find('\\') != std::string::npos || lowerCase(file).ends_with(".tmp");
}

// The library compares local times, which a change of the clocks moves by an hour.
bool isOld(const std::string& path, unsigned int days) {
  const auto time = writeTime(path);
  if (!time) return false;
  const auto age =
      std::chrono::floor<std::chrono::hours>(std::filesystem::file_time_type::clock::now() - *time);
  return age.count() > std::int64_t{days} * 24 + 1;
}

void copyFile(const std::string& source, const std::string& target) {
  if (FileSystem::TestOpen(source.c_str(), FileSystem::kAccessRead) == 0) {
    throw Failure("cannot read " + inQuotes(source) +
                  ": it does not exist, is not permitted, or another program uses it");
  }
  if (FileSystem::EnsurePathExists(target.c_str()) == 0) {
    throw Failure("cannot create or write to the directory " + inQuotes(target));
  }
  if (FileSystem::CopyFileA(source.c_str(), target.c_str(), FileSystem::kCopyAlways) == 0) {
    throw Failure("cannot copy " + inQuotes(source) + " to " + inQuotes(target));
  }
}

// True if the target has the size and the write time of the source, which the library keeps as far
// as the file system can: FAT has a time for every two seconds.
bool isCopied(const std::string& source, const std::string& target) {
  constexpr std::chrono::seconds kCoarsest(2);
  const auto time = writeTime(target);
  const auto sourceTime = writeTime(source);
  return time && sourceTime && std::chrono::abs(*time - *sourceTime) <= kCoarsest &&
         fileSize(target) == fileSize(source) && FileSystem::FolderExists(target.c_str()) == 0;
}

// The library reports how many files it has copied, but not which.
void reportUncopied(const std::string& source, const std::string& target,
                    const std::vector<std::string>& files, Output& output) {
  std::map<FileIdentity, std::string> copied;
  for (const std::string& file : files) {
    const std::optional<FileIdentity> identity = identityOf(target + file);
    const auto [own, isNew] = copied.emplace(identity.value_or(FileIdentity{}), file);
    std::string reason;
    if (identity && !isNew) {
      reason = "its file is that of " + inQuotes(nativePath(own->second));
    } else if (FileSystem::TestOpen((source + file).c_str(), FileSystem::kAccessRead) == 0) {
      reason = readFailure(source + file);
    } else if (!isCopied(source + file, target + file)) {
      reason = "the target cannot be written";
    } else {
      continue;
    }
    output.fail("cannot copy " + inQuotes(nativePath(file)) + ": " + reason);
  }
}

void copyDirectory(const std::string& source, const std::string& target, Output& output) {
  const Tree tree = filesBelow(source);
  reportLeftOut(tree, output);
  const std::vector<std::string>& files = tree.files;
  long copied = 0;
  {
    const Progress progress(output, "copying " + source);
    copied = FileSystem::CopyContent(source, target);
  }
  if (copied < 0) throw Failure("cannot create or write to the directory " + inQuotes(target));
  const auto count = static_cast<std::size_t>(copied);
  if (count < files.size()) reportUncopied(source, target, files, output);
  output.summary("copied " + counted(count, "file", "files"));
  if (count < files.size() && output.failures() == 0) {
    output.fail(counted(files.size() - count, "file", "files") + " could not be copied");
  }
}

// Reports the files that the pattern selects and the listing lacks.
void reportUnlisted(const std::string& base, const std::string& pattern,
                    const std::unordered_set<std::string>& listed, Tree all, Output& output) {
  std::erase_if(all.leftOut, [&](const LeftOut& item) {
    return !item.isDirectory && !selects(pattern, libraryPath(item.path));
  });
  for (const std::string& file : all.files) {
    const std::string path = base + file;
    if (listed.count(path) != 0 || !selects(pattern, file) || isListable(path)) continue;
    all.leftOut.push_back({nativePath(file), readFailure(path)});
  }
  reportLeftOut(all, output);
}

// Reports the old files of a swept directory that remain and are not in `listed`.
void reportKept(const std::string& top, unsigned int days,
                const std::unordered_set<std::string>& listed, Output& output) {
  const Tree tree = filesBelow(top, Links::kSkipped);
  for (const std::string& file : tree.files) {
    const std::string path = top + file;
    if (!isSwept(file) || !isOld(path, days) || listed.count(path) != 0) continue;
    std::string reason = "another program uses it, or its directory cannot be written";
    if (!isListable(path)) {
      reason = readFailure(path);
    } else if (FileSystem::IsFileReadOnly(path.c_str()) != 0) {
      reason = "it is read-only";
    }
    output.fail("kept " + inQuotes(nativePath(file)) + ": " + reason);
  }
  for (const LeftOut& item : tree.leftOut) {
    if (item.isDirectory) output.fail("left out " + inQuotes(item.path) + ": " + item.reason);
  }
}

}  // namespace

void tree(const std::string& directory, const std::string& pattern, Output& output) {
  requireDirectory(directory);
  const std::string base = withBackslash(directory);
  std::vector<std::string> files;
  Tree all;
  {
    const Progress progress(output, "listing " + directory);
    FileSystem::EnumFilesWithPath(files, base.c_str(), pattern.c_str(), true);
    all = filesBelow(base);
  }
  for (const std::string& file : files) writePath(file);
  reportUnlisted(base, pattern, {files.begin(), files.end()}, std::move(all), output);
}

void copy(const std::string& source, const std::string& target, Output& output) {
  const std::string directory = withBackslash(creatablePath(target));
  if (FileSystem::FolderExists(source.c_str()) != 0) {
    copyDirectory(withBackslash(source), directory, output);
  } else {
    copyFile(source, directory);
  }
}

void sweep(const std::string& directory, unsigned int days, bool dryRun, Output& output) {
  requireDirectory(directory);
  const std::string top = withBackslash(directory);
  std::vector<std::string> listed;
  if (dryRun) {
    FileSystem::listOldFiles(listed, top, days);
    std::sort(listed.begin(), listed.end());
    for (const std::string& file : listed) writePath(file);
  } else {
    const unsigned int count = FileSystem::eraseOldFile(top, days);
    output.summary("deleted " + counted(count, "file", "files"));
  }
  // The sweep also deletes a directory that becomes empty.
  if (FileSystem::FolderExists(directory.c_str()) != 0) {
    reportKept(top, days, {listed.begin(), listed.end()}, output);
  }
}
