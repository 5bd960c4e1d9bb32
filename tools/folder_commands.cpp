// tree, copy, sweep.

#include <filesystem/files.h>
#include <filesystem/path.h>
#include <filesystem/trees.h>

#include <algorithm>
#include <cstdio>
#include <vector>

#include "commands.h"
#include "paths.h"
#include "progress.h"
#include "terminal.h"
#include "text.h"

using FileSystem::ItemResult;
using FileSystem::Options;
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

[[noreturn]] void throwUnlisted(const std::string& directory, const Report& report) {
  throw Failure("cannot list the directory " + inQuotes(directory) + ": " +
                FileSystem::reasonText(report.reason));
}

void copyFile(const std::string& source, const std::string& target, Output& output) {
  Report report;
  {
    Progress progress(output, "copying " + source);
    report = FileSystem::copyFile(source.c_str(), target.c_str(),
                                  Options().setProgress(progress.callback()));
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
                                  Options().setProgress(progress.callback()));
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

}  // namespace

void tree(const std::string& directory, const std::string& pattern, Output& output) {
  requireDirectory(directory);
  const std::string top = withBackslash(directory);
  Report report;
  {
    Progress progress(output, "listing " + directory);
    Options options = Options().setLinks(false).setFolders(false);
    report = FileSystem::listTree(top.c_str(), pattern.c_str(),
                                  options.setProgress(progress.callback()));
  }
  if (report.reason != Reason::None) throwUnlisted(directory, report);
  for (const ItemResult& item : report.items) {
    if (item.reason == Reason::None) writePath(top + item.name);
  }
  for (const ItemResult& item : report.items) {
    if (item.reason != Reason::None) reportFailure("left out ", item, output);
  }
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
    report = sweepTree(top.c_str(), days, Options().setProgress(progress.callback()));
  }
  if (report.reason != Reason::None) throwUnlisted(directory, report);
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
