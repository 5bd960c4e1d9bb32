// tree, copy, sweep.

#include <filesystem/enumeration.h>
#include <filesystem/files.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <vector>

#include "commands.h"
#include "progress.h"

namespace {

void requireFolder(const std::string& folder) {
  if (FileSystem::FolderExists(folder.c_str()) == 0) {
    throw Failure("there is no folder '" + folder + "'");
  }
}

std::string withBackslash(const std::string& folder) {
  std::string text = withoutEndSeparators(folder);
  return text.ends_with('\\') ? text : text + '\\';
}

std::size_t countFiles(const std::string& folder) {
  std::vector<std::string> folders{folder};
  FileSystem::EnumFolders(folders, folder.c_str(), 1);
  std::vector<std::string> names;
  for (const std::string& current : folders) {
    FileSystem::EnumFiles(names, current.c_str(), "*.*");
  }
  return names.size();
}

void copyFile(const std::string& source, const std::string& target) {
  if (FileSystem::TestOpen(source.c_str(), 0x80000000) == 0) {
    throw Failure("cannot read '" + source + "': it does not exist, or another program holds it");
  }
  if (FileSystem::EnsurePathExists(target.c_str()) == 0) {
    throw Failure("cannot make or write to the folder '" + target + "'");
  }
  constexpr unsigned int kAlways = 0;
  if (FileSystem::CopyFileA(source.c_str(), target.c_str(), kAlways) == 0) {
    throw Failure("cannot copy '" + source + "' to '" + target + "'");
  }
}

void copyFolder(const std::string& source, const std::string& target) {
  const std::size_t expected = countFiles(source);
  long copied = 0;
  {
    const Progress progress("copying " + source);
    copied = FileSystem::CopyContent(source, target);
  }
  if (copied < 0) throw Failure("cannot make or write to the folder '" + target + "'");
  if (static_cast<std::size_t>(copied) < expected) {
    throw Failure(std::to_string(expected - static_cast<std::size_t>(copied)) + " of " +
                  std::to_string(expected) + " files could not be copied to '" + target + "'");
  }
  std::printf("copied %ld files\n", copied);
}

// The present moment as fileTime gives moments: local days since 1899-12-30.
double now() {
  const std::time_t utc = std::time(nullptr);
  const std::tm local = *std::localtime(&utc);
  const std::chrono::year_month_day date(
      std::chrono::year(local.tm_year + 1900),
      std::chrono::month(static_cast<unsigned>(local.tm_mon) + 1),
      std::chrono::day(static_cast<unsigned>(local.tm_mday)));
  constexpr double kDaysTo1970 = 25569.0;
  constexpr double kSecondsPerDay = 86400.0;
  const int seconds = (local.tm_hour * 60 + local.tm_min) * 60 + local.tm_sec;
  const auto days = std::chrono::sys_days(date).time_since_epoch().count();
  return kDaysTo1970 + static_cast<double>(days) + seconds / kSecondsPerDay;
}

// The files below a folder that a sweep looks at, without those behind links.
void collectBelow(const std::string& folder, std::vector<std::string>& files) {
  constexpr std::uint32_t kLink = 0x400;  // FILE_ATTRIBUTE_REPARSE_POINT
  std::vector<FileSystem::FILE_INFORMATION> folders;
  FileSystem::EnumFolders(folders, folder.c_str(), 0);
  for (const FileSystem::FILE_INFORMATION& below : folders) {
    if ((below.dwFileAttributes & kLink) != 0) continue;
    const std::string path = folder + below.cFileName + '\\';
    FileSystem::EnumFilesWithPath(files, path.c_str(), "*.*", false);
    collectBelow(path, files);
  }
}

}  // namespace

void tree(const std::string& folder, const std::string& pattern) {
  requireFolder(folder);
  std::vector<std::string> files;
  {
    const Progress progress("listing " + folder);
    FileSystem::EnumFilesWithPath(files, withBackslash(folder).c_str(), pattern.c_str(), true);
  }
  for (const std::string& file : files) std::printf("%s\n", file.c_str());
}

void copy(const std::string& source, const std::string& target) {
  const std::string folder = withBackslash(madeReady(target));
  if (FileSystem::FolderExists(source.c_str()) != 0) {
    copyFolder(withBackslash(source), folder);
  } else {
    copyFile(source, folder);
  }
}

void sweep(const std::string& folder, unsigned int days, bool dryRun) {
  requireFolder(folder);
  const std::string top = withBackslash(folder);
  if (!dryRun) {
    std::printf("deleted %u files\n", FileSystem::eraseOldFile(top, days));
    return;
  }
  std::vector<std::string> files;
  FileSystem::EnumFilesWithPath(files, top.c_str(), "*.tmp", false);
  collectBelow(top, files);
  const double limit = now() - days;
  for (const std::string& file : files) {
    if (FileSystem::fileTime(file) <= limit) std::printf("%s\n", file.c_str());
  }
}
