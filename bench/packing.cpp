// Packing and unpacking, each side in a process of its own.

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "benchmarks.h"
#include "process.h"

namespace fs = std::filesystem;

namespace bench {
namespace {

const std::string kPrograms = BENCH_PROGRAMS "/";

std::string megabytes(const std::string& file) {
  char text[32];
  std::snprintf(text, sizeof(text), "%.2f MB", static_cast<double>(fs::file_size(file)) / 1e6);
  return text;
}

using FolderOf = const std::string& (Workspace::*)(int) const;

Operation packing(const Workspace& workspace, const std::string& what, FolderOf folderOf) {
  const std::string folder = (workspace.*folderOf)(8);
  const auto target = [&workspace] { return workspace.fresh("packed.zip"); };
  const auto program = [=](const std::vector<std::string>& command, bool inFolder) {
    return [=] {
      const std::string zip = target();
      std::vector<std::string> whole = command;
      for (std::string& word : whole) {
        if (word == "ZIP") word = zip;
      }
      return runProgram(whole, inFolder ? folder : "");
    };
  };
  return {.name = "pack " + what,
          .target = 0.5,
          .ours =
              [=, &workspace](int eighths) {
                return runProgram({kPrograms + "bench-ours", "pack", (workspace.*folderOf)(eighths),
                                   workspace.fresh("ours.zip")});
              },
          .peers = {{"zip -r", program({"zip", "-q", "-r", "ZIP", "."}, true)},
                    {"7z -tzip -mmt1", program({"7z", "a", "-tzip", "-mmt1", "ZIP", "."}, true)},
                    {"bsdtar", program({"bsdtar", "--format", "zip", "-cf", "ZIP", "."}, true)},
                    {"libzip", program({kPrograms + "bench-libzip", folder, "ZIP"}, false)},
                    {"POCO Zip", program({kPrograms + "bench-poco", folder, "ZIP"}, false)}},
          .note =
              [=, &workspace] {
                const std::string zip = target();
                runProgram({"zip", "-q", "-r", "-D", zip, "."}, folder);
                const std::string ours = workspace.fresh("ours.zip");
                runProgram({kPrograms + "bench-ours", "pack", folder, ours});
                return "size " + megabytes(ours) + ", of `zip` " + megabytes(zip);
              }};
}

// Packs with two threads. The remark has the processor time of the thread that took more, which is what
// other programs on the machine disturb least.
Operation packingWithTwoThreads(const Workspace& workspace, const std::string& what,
                                FolderOf folderOf, std::vector<Peer> peers) {
  const std::string folder = (workspace.*folderOf)(8);
  const auto pack = [&workspace](const std::string& job, const std::string& in) {
    return std::vector{kPrograms + "bench-ours", job, in, workspace.fresh("ours.zip")};
  };
  peers.push_back({"one thread", [=] { return runProgram(pack("pack-1", folder)); }});
  peers.push_back({"7z -tzip -mmt2", [=, &workspace] {
                     return runProgram(
                         {"7z", "a", "-tzip", "-mmt2", workspace.fresh("packed.zip"), "."}, folder);
                   }});
  return {.name = "pack " + what + ", two threads",
          .target = 0.6,
          .ours =
              [=, &workspace](int eighths) {
                return runProgram(pack("pack-2", (workspace.*folderOf)(eighths)));
              },
          .peers = std::move(peers),
          .note =
              [=] {
                const auto longest = [&](const std::string& job) {
                  std::string command;
                  for (const std::string& word : pack(job, folder)) command += word + ' ';
                  return versionLine(command);
                };
                return "longest thread " + longest("pack-2") + ", of one " + longest("pack-1");
              }};
}

// All unpack the archives of `zip`, and so create the same tree.
Operation unpacking(const Workspace& workspace, const std::string& what, FolderOf folderOf,
                    const std::string& prefix) {
  const auto archive = [=, &workspace](int eighths) {
    const std::string& folder = (workspace.*folderOf)(eighths);
    std::string path = folder + '.' + prefix + ".zip";
    if (!fs::exists(path)) runProgram({"zip", "-q", "-r", "-D", path, "."}, folder);
    return path;
  };
  const auto whole = [=] { return archive(8); };
  const auto into = [&workspace] { return workspace.emptyFolder("unpacked"); };
  return {.name = "unpack " + what,
          .target = 0.7,
          .ours =
              [=](int eighths) {
                return runProgram({kPrograms + "bench-ours", "unpack", archive(eighths), into()});
              },
          .peers = {{"unzip",
                     [=] {
                       return runProgram({"unzip", "-q", whole(), "-d", into()});
                     }},
                    {"7z",
                     [=] {
                       return runProgram({"7z", "x", "-y", "-mmt1", "-o" + into(), whole()});
                     }},
                    {"bsdtar",
                     [=] {
                       return runProgram({"bsdtar", "-xf", whole(), "-C", into()});
                     }}},
          .note = {}};
}

// Unpacks an archive of one entry that has 30 MB stored. The file for igzip has as many.
Operation unpackingALargeEntry(const Workspace& workspace) {
  const auto archive = [&workspace](int eighths) {
    const std::string folder = workspace.path("entry" + std::to_string(eighths));
    std::string path = folder + ".zip";
    if (fs::exists(path)) return path;
    fs::create_directories(folder);
    const std::string text =
        sourceText(workspace.scaled(256'000'000) / 8 * static_cast<std::size_t>(eighths));
    std::ofstream(folder + "/text.txt", std::ios::binary) << text;
    runProgram({"zip", "-q", "-D", path, "text.txt"}, folder);
    runProgram({"gzip", "text.txt"}, folder);
    return path;
  };
  const auto into = [&workspace] { return workspace.emptyFolder("unpacked"); };
  return {.name = "unpack an entry of 256 MB text",
          .target = 1.0,
          .ours =
              [=](int eighths) {
                return runProgram({kPrograms + "bench-ours", "unpack", archive(eighths), into()});
              },
          .peers = {{"igzip -d",
                     [=, &workspace] {
                       const std::string zip = archive(8);
                       return runProgram({"igzip", "-d", "-q", "-k", "-o", into() + "/text.txt",
                                          workspace.path("entry8/text.txt.gz")});
                     }},
                    {"unzip",
                     [=] {
                       return runProgram({"unzip", "-q", archive(8), "-d", into()});
                     }},
                    {"bsdtar",
                     [=] {
                       return runProgram({"bsdtar", "-xf", archive(8), "-C", into()});
                     }}},
          .note = {}};
}

}  // namespace

std::vector<Operation> packingOperations(const Workspace& workspace) {
  struct Work {
    const char* what;
    const char* prefix;
    FolderOf folder;
  };
  constexpr Work kWorks[] = {{"20,000 source files", "tree", &Workspace::tree},
                             {"100 MB text", "text", &Workspace::text},
                             {"100 MB random bytes", "noise", &Workspace::noise}};
  std::vector<Operation> operations;
  for (const Work& work : kWorks) operations.push_back(packing(workspace, work.what, work.folder));
  operations.push_back(
      packingWithTwoThreads(workspace, "20,000 source files", &Workspace::tree, {}));
  operations.push_back(packingWithTwoThreads(
      workspace, "100 MB text", &Workspace::text,
      {{"pigz -K -p 2", [&workspace] {
          return runProgram({"pigz", "-K", "-c", "-p", "2", workspace.text(8) + "/text.txt"});
        }}}));
  for (const Work& work : kWorks) {
    operations.push_back(unpacking(workspace, work.what, work.folder, work.prefix));
  }
  operations.push_back(unpackingALargeEntry(workspace));
  return operations;
}

}  // namespace bench
