// tree, copy, sweep.

#include <filesystem/enumeration.h>
#include <filesystem/files.h>
#include <filesystem/path.h>
#include <filesystem/trees.h>

#include <algorithm>
#include <cstdio>
#include <unordered_set>
#include <utility>
#include <vector>

#include "commands.h"
#include "file_tree.h"
#include "paths.h"
#include "progress.h"
#include "terminal.h"
#include "text.h"
#include "wildcard.h"

using FileSystem::ItemResult;
using FileSystem::Reason;
using FileSystem::Report;

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

// Writes the paths of the files that are done, sorted.
void writeFiles(const Report& report, const std::string& base) {
  std::vector<std::string> paths;
  for (const ItemResult& item : report.items) {
    if (item.reason == Reason::None) paths.push_back(base + item.name);
  }
  std::sort(paths.begin(), paths.end());
  for (const std::string& path : paths) writePath(path);
}

std::size_t filesDone(const Report& report) {
  return static_cast<std::size_t>(
      std::count_if(report.items.begin(), report.items.end(),
                    [](const ItemResult& item) { return item.reason == Reason::None; }));
}

// Returns a path below a directory as other programs know it. Alone it could have the form of a
// drive.
std::string nativeName(const std::string& name) {
  const std::string root = "C:\\";
  return nativePath(root + name).substr(nativePath(root).size());
}

void reportFailure(const std::string& what, const ItemResult& item, Output& output) {
  const std::string name = item.name.empty() ? "." : nativeName(item.name);
  const std::string reason = item.other.empty()
                                 ? FileSystem::reasonText(item.reason)
                                 : "its file is that of " + inQuotes(nativeName(item.other));
  output.fail(what + inQuotes(name) + ": " + reason);
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

void copyFile(const std::string& source, const std::string& target, Output& output) {
  Report report;
  {
    Progress progress(output, "copying " + source);
    report = FileSystem::copyFile(source.c_str(), target.c_str(),
                                  FileSystem::Options().setProgress(progress.callback()));
  }
  if (report) return;
  const Reason reason = report.reason == Reason::None ? report.items.back().reason : report.reason;
  throw Failure("cannot copy " + inQuotes(source) + " to " + inQuotes(target) + ": " +
                FileSystem::reasonText(reason));
}

void copyDirectory(const std::string& source, const std::string& target, Output& output) {
  Report report;
  {
    Progress progress(output, "copying " + source);
    report = FileSystem::copyTree(source.c_str(), target.c_str(),
                                  FileSystem::Options().setProgress(progress.callback()));
  }
  if (report.reason != Reason::None) {
    throw Failure("cannot copy to the directory " + inQuotes(target) + ": " +
                  FileSystem::reasonText(report.reason));
  }
  for (const ItemResult& item : report.items) {
    if (item.reason == Reason::None) continue;
    const bool isLeftOut = item.isFolder || item.reason == Reason::NotAFile;
    reportFailure(isLeftOut ? "left out " : "cannot copy ", item, output);
  }
  output.summary("copied " + counted(filesDone(report), "file", "files"));
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

}  // namespace

void tree(const std::string& directory, const std::string& pattern, Output& output) {
  requireDirectory(directory);
  const std::string base = withBackslash(directory);
  std::vector<std::string> files;
  Tree all;
  {
    const Progress progress(output, "listing " + directory);
    FileSystem::EnumFilesWithPath(files, base.c_str(), pattern.c_str(), true);
    all = filesBelow(base, Links::kFollowed);
  }
  for (const std::string& file : files) writePath(file);
  reportUnlisted(base, pattern, {files.begin(), files.end()}, std::move(all), output);
}

void copy(const std::string& source, const std::string& target, Output& output) {
  const std::string directory = withBackslash(creatablePath(target));
  if (FileSystem::FolderExists(source.c_str()) != 0) {
    copyDirectory(withBackslash(source), directory, output);
  } else {
    copyFile(source, directory, output);
  }
}

void sweep(const std::string& directory, unsigned int days, bool dryRun, Output& output) {
  requireDirectory(directory);
  const std::string top = withBackslash(directory);
  Report report;
  {
    Progress progress(output, "sweeping " + directory);
    const auto sweepTree = dryRun ? FileSystem::findOldFiles : FileSystem::deleteOldFiles;
    report = sweepTree(top.c_str(), days, FileSystem::Options().setProgress(progress.callback()));
  }
  if (report.reason != Reason::None) {
    throw Failure("cannot list the directory " + inQuotes(directory) + ": " +
                  FileSystem::reasonText(report.reason));
  }
  if (dryRun) {
    writeFiles(report, top);
  } else {
    output.summary("deleted " + counted(filesDone(report), "file", "files"));
  }
  for (const ItemResult& item : report.items) {
    if (item.reason != Reason::None) {
      reportFailure(item.isFolder ? "left out " : "kept ", item, output);
    }
  }
}
