// Single calls on archives of many small entries, compared with libzip.

#include <filesystem/zip_archive.h>
#include <zip.h>

#include <filesystem>

#include "benchmarks.h"

namespace fs = std::filesystem;

namespace bench {
namespace {

constexpr unsigned kRead = 0x80000000;
constexpr unsigned kReadWrite = 0xC0000000;

zip_t* openZip(const std::string& path) {
  int error = 0;
  zip_t* const archive = zip_open(path.c_str(), 0, &error);
  require(archive != nullptr, "libzip opens");
  return archive;
}

std::size_t entriesOf(std::size_t full, int eighths) {
  return full / 8 * static_cast<std::size_t>(eighths);
}

// Copies an archive, for a call that changes it.
std::string copyOf(const std::string& archive, const Workspace& workspace) {
  std::string copy = workspace.fresh("changed.zip");
  fs::copy_file(archive, copy);
  return copy;
}

Operation extraction(const Workspace& workspace, std::size_t entries) {
  const auto name = [=](int eighths) { return entryName(entriesOf(entries, eighths) * 3 / 4); };
  return {.name = "extract to memory, one of 10,000",
          .target = 0.5,
          .ours =
              [=, &workspace](int eighths) {
                return timed([&] {
                  ZipArchive archive;
                  std::vector<unsigned char> bytes;
                  require(archive.open(workspace.smallArchive(eighths).c_str(), kRead) != 0 &&
                              archive.extract(name(eighths).c_str(), bytes) != 0,
                          "extract");
                });
              },
          .peers = {{"libzip",
                     [=, &workspace] {
                       return timed([&] {
                         zip_t* const archive = openZip(workspace.smallArchive(8));
                         const std::string wanted = name(8);
                         zip_stat_t info;
                         require(zip_stat(archive, wanted.c_str(), 0, &info) == 0, "zip_stat");
                         std::vector<unsigned char> bytes(info.size);
                         zip_file_t* const file = zip_fopen(archive, wanted.c_str(), 0);
                         require(zip_fread(file, bytes.data(), info.size) ==
                                     static_cast<zip_int64_t>(info.size),
                                 "zip_fread");
                         zip_fclose(file);
                         zip_discard(archive);
                       });
                     }}},
          .note = {}};
}

Operation insertion(const Workspace& workspace) {
  static const std::string text = sourceText(10'000);
  return {.name = "insert 10 KB into 10,000",
          .target = 0.05,
          .ours =
              [&workspace](int eighths) {
                const std::string path = copyOf(workspace.smallArchive(eighths), workspace);
                const std::vector<unsigned char> bytes(text.begin(), text.end());
                return timed([&] {
                  ZipArchive archive;
                  require(archive.open(path.c_str(), kReadWrite) != 0 &&
                              archive.insert(bytes, "new.txt", "", 0) != 0,
                          "insert");
                });
              },
          .peers = {{"libzip",
                     [&workspace] {
                       const std::string path = copyOf(workspace.smallArchive(8), workspace);
                       return timed([&] {
                         zip_t* const archive = openZip(path);
                         zip_source_t* const source =
                             zip_source_buffer(archive, text.data(), text.size(), 0);
                         require(zip_file_add(archive, "new.txt", source, 0) >= 0 &&
                                     zip_close(archive) == 0,
                                 "zip_file_add");
                       });
                     }}},
          .note = {}};
}

Operation removal(const Workspace& workspace, std::size_t entries) {
  const auto name = [=](int eighths) { return entryName(entriesOf(entries, eighths) / 2); };
  return {.name = "remove one of 10,000",
          .target = 0.5,
          .ours =
              [=, &workspace](int eighths) {
                const std::string path = copyOf(workspace.smallArchive(eighths), workspace);
                return timed([&] {
                  ZipArchive archive;
                  require(archive.open(path.c_str(), kReadWrite) != 0 &&
                              archive.remove(name(eighths).c_str()) != 0,
                          "remove");
                });
              },
          .peers = {{"libzip",
                     [=, &workspace] {
                       const std::string path = copyOf(workspace.smallArchive(8), workspace);
                       return timed([&] {
                         zip_t* const archive = openZip(path);
                         const zip_int64_t index = zip_name_locate(archive, name(8).c_str(), 0);
                         require(index >= 0, "zip_name_locate");
                         require(zip_delete(archive, static_cast<zip_uint64_t>(index)) == 0 &&
                                     zip_close(archive) == 0,
                                 "zip_delete");
                       });
                     }}},
          .note = {}};
}

Operation existence(const Workspace& workspace, std::size_t entries) {
  const auto name = [=](int eighths) { return entryName(entriesOf(entries, eighths) * 3 / 4); };
  return {.name = "exist on 100,000",
          .target = 0.5,
          .ours =
              [=, &workspace](int eighths) {
                return timed([&] {
                  ZipArchive archive;
                  require(archive.open(workspace.largeArchive(eighths).c_str(), kRead) != 0 &&
                              archive.exist(name(eighths).c_str()) != 0,
                          "exist");
                });
              },
          .peers = {{"libzip",
                     [=, &workspace] {
                       return timed([&] {
                         zip_t* const archive = openZip(workspace.largeArchive(8));
                         require(zip_name_locate(archive, name(8).c_str(), 0) >= 0,
                                 "zip_name_locate");
                         zip_discard(archive);
                       });
                     }}},
          .note = {}};
}

Operation enumeration(const Workspace& workspace) {
  return {
      .name = "enumerate 100,000",
      .target = 0.5,
      .ours =
          [&workspace](int eighths) {
            std::vector<std::string> names;
            return timed([&] {
              ZipArchive archive;
              require(archive.open(workspace.largeArchive(eighths).c_str(), kRead) != 0 &&
                          archive.enumerate(names) != 0,
                      "enumerate");
            });
          },
      .peers = {{"libzip",
                 [&workspace] {
                   std::vector<std::string> names;
                   return timed([&] {
                     zip_t* const archive = openZip(workspace.largeArchive(8));
                     const zip_int64_t count = zip_get_num_entries(archive, 0);
                     for (zip_int64_t i = 0; i < count; ++i) {
                       names.emplace_back(zip_get_name(archive, static_cast<zip_uint64_t>(i), 0));
                     }
                     zip_discard(archive);
                   });
                 }}},
      .note = {}};
}

}  // namespace

std::vector<Operation> archiveOperations(const Workspace& workspace) {
  const std::size_t small = workspace.scaled(10'000);
  const std::size_t large = workspace.scaled(100'000);
  return {extraction(workspace, small), insertion(workspace), removal(workspace, small),
          existence(workspace, large), enumeration(workspace)};
}

}  // namespace bench
