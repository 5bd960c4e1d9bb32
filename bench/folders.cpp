// Enumeration, copying and deleting of trees.

#include <dirent.h>
#include <fcntl.h>
#include <filesystem/enumeration.h>
#include <filesystem/files.h>
#include <filesystem/temporary_storage.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string_view>

#include "benchmarks.h"
#include "process.h"

namespace fs = std::filesystem;

namespace bench {
namespace {

const std::string kPrograms = BENCH_PROGRAMS "/";

Operation enumerateFiles(const Workspace& workspace) {
  return {
      .name = "EnumFilesWithPath, 20,000 files",
      .target = 1.0,
      .ours =
          [&workspace](int eighths) {
            std::vector<std::string> files;
            return timed([&] {
              FileSystem::EnumFilesWithPath(files, workspace.tree(eighths).c_str(), "*.*", true);
              require(files.size() > 0, "EnumFilesWithPath");
            });
          },
      .peers = {{"recursive_directory_iterator and open",
                 [&workspace] {
                   std::vector<std::string> files;
                   return timed([&] {
                     for (const auto& entry : fs::recursive_directory_iterator(workspace.tree(8))) {
                       if (!entry.is_regular_file()) continue;
                       const int file = ::open(entry.path().c_str(), O_RDONLY | O_CLOEXEC);
                       if (file < 0) continue;
                       ::close(file);
                       files.push_back(entry.path().string());
                     }
                   });
                 }}},
      .note = {}};
}

Operation enumerateFolders(const Workspace& workspace) {
  return {
      .name = "EnumFolders, the same tree",
      .target = 1.0,
      .ours =
          [&workspace](int eighths) {
            std::vector<std::string> folders;
            return timed([&] {
              FileSystem::EnumFolders(folders, workspace.tree(eighths).c_str(), 1);
              require(folders.size() > 0, "EnumFolders");
            });
          },
      .peers = {{"recursive_directory_iterator",
                 [&workspace] {
                   std::vector<std::string> folders;
                   return timed([&] {
                     for (const auto& entry : fs::recursive_directory_iterator(workspace.tree(8))) {
                       if (entry.is_directory()) folders.push_back(entry.path().string());
                     }
                   });
                 }}},
      .note = {}};
}

// Copies a folder, whose path `source` returns for an amount of work.
Operation copying(const std::string& name, double target,
                  const std::function<std::string(int)>& source, const Workspace& workspace) {
  const auto into = [&workspace] { return workspace.emptyFolder("copied"); };
  return {.name = name,
          .target = target,
          .ours =
              [=](int eighths) {
                return runProgram(
                    {kPrograms + "bench-ours", "copy", source(eighths) + '\\', into() + '\\'});
              },
          .peers = {{"cp -r",
                     [=] {
                       return runProgram({"cp", "-r", source(8) + "/.", into()});
                     }},
                    {"std::filesystem::copy",
                     [=] {
                       return runProgram({kPrograms + "bench-std", source(8), into()});
                     }}},
          .note = {}};
}

Operation copyTree(const Workspace& workspace) {
  const auto source = [&workspace](int eighths) { return workspace.tree(eighths); };
  return copying("CopyContent, 20,000 files", 1.0, source, workspace);
}

void fill(const std::string& folder, std::size_t count) {
  const std::string content(1000, 'x');
  for (std::size_t i = 0; i < count; ++i) {
    const std::string below = folder + "/d" + std::to_string(i / 100);
    if (i % 100 == 0) fs::create_directories(below);
    std::ofstream(below + "/f" + std::to_string(i)) << content;
  }
}

// Deletes a tree with the calls that show whether another handle protects a file from deletion, and
// no others.
void deletePlainly(int parent, const char* name) {
  DIR* const listing = fdopendir(openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  require(listing != nullptr, "fdopendir");
  const int folder = dirfd(listing);
  while (const dirent* const entry = readdir(listing)) {
    const std::string_view below = entry->d_name;
    if (below == "." || below == "..") continue;
    if (entry->d_type == DT_DIR) {
      deletePlainly(folder, entry->d_name);
      continue;
    }
    const int file = openat(folder, entry->d_name, O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
    struct stat status;
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_len = 1;
    require(fstat(file, &status) == 0 && fcntl(file, F_OFD_GETLK, &lock) == 0, "fcntl");
    close(file);
    require(unlinkat(folder, entry->d_name, 0) == 0, "unlinkat");
  }
  closedir(listing);
  require(unlinkat(parent, name, AT_REMOVEDIR) == 0, "unlinkat");
}

Operation clearStorage(const Workspace& workspace) {
  const std::size_t count = workspace.scaled(10'000);
  const auto filled = [=, &workspace] {
    std::string folder = workspace.emptyFolder("storage");
    fill(folder, count);
    return folder;
  };
  return {.name = "TemporaryStorage::clear, 10,000 files",
          .target = 1.15,
          .ours =
              [=, &workspace](int eighths) {
                FileSystem::TemporaryStorage storage;
                require(storage.create(workspace.emptyFolder("storage"), false), "create");
                std::string folder = storage.path();
                std::replace(folder.begin(), folder.end(), '\\', '/');
                fill(folder, count / 8 * static_cast<std::size_t>(eighths));
                const Cost cost = timed([&] { storage.clear(); });
                require(!fs::exists(folder), "TemporaryStorage::clear");
                return cost;
              },
          .peers = {{"std::filesystem::remove_all",
                     [=] {
                       const std::string folder = filled();
                       return timed([&] { fs::remove_all(folder); });
                     }},
                    {"its system calls",
                     [=] {
                       const std::string folder = filled();
                       return timed([&] { deletePlainly(AT_FDCWD, folder.c_str()); });
                     }}},
          .note = {}};
}

// Fills a folder with subfolders of one small file each, seven levels deep.
void fillFolders(const std::string& folder, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    std::string below = folder;
    for (std::size_t rest = i; rest > 0; rest /= 4) below += "/d" + std::to_string(rest % 4);
    fs::create_directories(below);
    std::ofstream(below + "/f" + std::to_string(i)) << "content";
  }
}

Operation copyFolders(const Workspace& workspace) {
  const std::size_t count = workspace.scaled(8'000);
  const auto source = [=, &workspace](int eighths) {
    std::string folder = workspace.path("folders" + std::to_string(eighths));
    if (!fs::exists(folder)) fillFolders(folder, count / 8 * static_cast<std::size_t>(eighths));
    return folder;
  };
  return copying("CopyContent, 8,000 folders of one file", 1.15, source, workspace);
}

Operation sweep(const Workspace& workspace) {
  const std::size_t count = workspace.scaled(10'000);
  // A folder of files that were written long ago.
  const auto oldFiles = [=, &workspace](int eighths) {
    std::string folder = workspace.emptyFolder("old");
    fill(folder, count / 8 * static_cast<std::size_t>(eighths));
    const auto then = fs::file_time_type::clock::now() - std::chrono::hours(24 * 60);
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      if (entry.is_regular_file()) fs::last_write_time(entry.path(), then);
    }
    return folder;
  };
  return {.name = "eraseOldFile, 10,000 files",
          .target = 1.5,
          .ours =
              [=](int eighths) {
                const std::string folder = oldFiles(eighths);
                const Cost cost = timed([&] { FileSystem::eraseOldFile(folder + '\\', 30); });
                require(!fs::exists(folder), "eraseOldFile");
                return cost;
              },
          .peers = {{"find -delete",
                     [=] {
                       const std::string folder = oldFiles(8);
                       const Cost cost =
                           runProgram({"find", folder, "-type", "f", "-mtime", "+30", "-delete",
                                       "-o", "-type", "d", "-empty", "-delete"});
                       require(!fs::exists(folder), "find");
                       return cost;
                     }}},
          .note = {}};
}

}  // namespace

std::vector<Operation> folderOperations(const Workspace& workspace) {
  return {enumerateFiles(workspace), enumerateFolders(workspace), copyTree(workspace),
          copyFolders(workspace),    clearStorage(workspace),     sweep(workspace)};
}

}  // namespace bench
