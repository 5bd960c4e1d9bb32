// tree, copy, sweep.

#include <filesystem/enumeration.h>
#include <filesystem/files.h>

#include <algorithm>
#include <cstdio>
#include <vector>

#include "commands.h"
#include "file_tree.h"
#include "paths.h"
#include "progress.h"
#include "terminal.h"
#include "text.h"

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

// True if the target has the size and the write time of the source, which the
// library keeps.
bool isCopied(const std::string& source, const std::string& target) {
  const auto time = writeTime(target);
  return time && time == writeTime(source) && fileSize(target) == fileSize(source) &&
         FileSystem::FolderExists(target.c_str()) == 0;
}

// The library reports how many files it has copied, but not which.
void reportUncopied(const std::string& source, const std::string& target,
                    const std::vector<std::string>& files, Output& output) {
  for (const std::string& file : files) {
    if (isCopied(source + file, target + file)) continue;
    const bool isReadable =
        FileSystem::TestOpen((source + file).c_str(), FileSystem::kAccessRead) != 0;
    output.fail("cannot copy " + inQuotes(nativePath(file)) + ": " +
                (isReadable ? "the target cannot be written" : readFailure(source + file)));
  }
}

void copyDirectory(const std::string& source, const std::string& target, Output& output) {
  const std::vector<std::string> files = filesBelow(source, output);
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

}  // namespace

void tree(const std::string& directory, const std::string& pattern, const Output& output) {
  requireDirectory(directory);
  std::vector<std::string> files;
  {
    const Progress progress(output, "listing " + directory);
    FileSystem::EnumFilesWithPath(files, withBackslash(directory).c_str(), pattern.c_str(), true);
  }
  for (const std::string& file : files) writePath(file);
}

void copy(const std::string& source, const std::string& target, Output& output) {
  const std::string directory = withBackslash(creatablePath(target));
  if (FileSystem::FolderExists(source.c_str()) != 0) {
    copyDirectory(withBackslash(source), directory, output);
  } else {
    copyFile(source, directory);
  }
}

void sweep(const std::string& directory, unsigned int days, bool dryRun, const Output& output) {
  requireDirectory(directory);
  const std::string top = withBackslash(directory);
  if (!dryRun) {
    const unsigned int count = FileSystem::eraseOldFile(top, days);
    output.summary("deleted " + counted(count, "file", "files"));
    return;
  }
  std::vector<std::string> files;
  FileSystem::listOldFiles(files, top, days);
  std::sort(files.begin(), files.end());
  for (const std::string& file : files) writePath(file);
}
