// Many calls on one archive, as a host's loop makes them, compared with libzip's on an open archive.

#include <filesystem/archive.h>
#include <filesystem/zip_archive.h>
#include <zip.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "benchmarks.h"
#include "lookup_floor.h"

namespace bench {
namespace {

constexpr std::size_t kCalls = 1000;

struct Closer {
  void operator()(zip_t* archive) const { zip_discard(archive); }
  void operator()(zip_file_t* file) const { zip_fclose(file); }
};
using Zip = std::unique_ptr<zip_t, Closer>;
using ZipFile = std::unique_ptr<zip_file_t, Closer>;

Zip openZip(const std::string& path) {
  int error = 0;
  Zip zip(zip_open(path.c_str(), ZIP_RDONLY, &error));
  require(zip != nullptr, "libzip opens");
  return zip;
}

// An archive, opened before the calls are timed, and the names that they ask for.
struct Opened {
  Opened(const std::string& path, std::size_t entries) : zip(openZip(path)) {
    require(archive.open(path.c_str()) == FileSystem::Reason::None, "open");
    require(archive.contains(entryName(0).c_str()), "contains");
    // In no order of the directory.
    for (std::size_t i = 0; i < kCalls; ++i) names.push_back(entryName(i * 7919 % entries));
  }

  FileSystem::Archive archive;
  Zip zip;
  std::vector<std::string> names;
};

// Opens the archives of all sizes once, when the first run needs them.
class Archives {
 public:
  explicit Archives(const Workspace& workspace) : workspace_(workspace) {}

  const Opened& get(int eighths) {
    const std::size_t entries = workspace_.scaled(100'000, eighths);
    return opened_.try_emplace(eighths, workspace_.largeArchive(eighths), entries).first->second;
  }

 private:
  const Workspace& workspace_;
  std::map<int, Opened> opened_;
};

Operation lookup(const std::shared_ptr<Archives>& archives) {
  return {.name = "1,000 names in an open archive of 100,000",
          .target = 2.0,
          .ours =
              [=](int eighths) {
                const Opened& opened = archives->get(eighths);
                return timed([&] {
                  for (const std::string& name : opened.names) {
                    require(opened.archive.contains(name.c_str()), "contains");
                  }
                });
              },
          .peers = {{"libzip",
                     [=] {
                       const Opened& opened = archives->get(8);
                       return timed([&] {
                         for (const std::string& name : opened.names) {
                           require(zip_name_locate(opened.zip.get(), name.c_str(), 0) >= 0,
                                   "zip_name_locate");
                         }
                       });
                     }}},
          .note = {}};
}

// Reads an entry's content with libzip.
void readWithLibzip(const Opened& opened, const std::string& name) {
  zip_stat_t info;
  require(zip_stat(opened.zip.get(), name.c_str(), 0, &info) == 0, "zip_stat");
  std::vector<unsigned char> bytes(info.size);
  const ZipFile file(zip_fopen_index(opened.zip.get(), info.index, 0));
  require(zip_fread(file.get(), bytes.data(), info.size) == static_cast<zip_int64_t>(info.size),
          "zip_fread");
}

Operation reading(const std::shared_ptr<Archives>& archives) {
  return {
      .name = "1,000 entries of an open archive of 100,000",
      .target = 1.0,
      .ours =
          [=](int eighths) {
            const Opened& opened = archives->get(eighths);
            std::vector<unsigned char> bytes;
            return timed([&] {
              for (const std::string& name : opened.names) {
                const std::optional<FileSystem::Entry> entry = opened.archive.find(name.c_str());
                require(entry && opened.archive.readAll(*entry, bytes) == FileSystem::Reason::None,
                        "readAll");
              }
            });
          },
      .peers = {{"libzip",
                 [=] {
                   const Opened& opened = archives->get(8);
                   return timed([&] {
                     for (const std::string& name : opened.names) readWithLibzip(opened, name);
                   });
                 }}},
      .note = {}};
}

// A ZipArchive, opened before the calls are timed, the least that they take, and the names that they
// ask for. The plain form keeps nothing between calls: each reads the directory.
struct Plain {
  Plain(const std::string& path, std::size_t entries) : floor(path) {
    constexpr unsigned kRead = 0x80000000;
    require(archive.open(path.c_str(), kRead) != 0, "open");
    for (std::size_t i = 0; i < kPlainCalls; ++i) names.push_back(entryName(i * 7919 % entries));
  }

  static constexpr std::size_t kPlainCalls = 20;

  ZipArchive archive;
  LookupFloor floor;
  std::vector<std::string> names;
};

// `call` and `floor` make one call each, by name, on an archive of so many entries.
Operation plainCalls(const std::string& name, const Workspace& workspace, std::size_t entries,
                     const std::function<bool(Plain&, const std::string&)>& call,
                     const std::function<bool(Plain&, const std::string&)>& floor) {
  const auto timedCalls = [=, &workspace](int eighths, const auto& one) {
    Plain plain(workspace.archive(entries, eighths), workspace.scaled(entries, eighths));
    return timed([&] {
      for (const std::string& entry : plain.names) require(one(plain, entry), name.c_str());
    });
  };
  return {
      .name = name,
      .target = 1.2,
      .ours = [=](int eighths) { return timedCalls(eighths, call); },
      .peers = {{"its system calls, a search and the codec", [=] { return timedCalls(8, floor); }}},
      .note = {}};
}

Operation plainLookup(const Workspace& workspace, std::size_t entries, const std::string& count) {
  return plainCalls(
      "exist, 20 calls on " + count, workspace, entries,
      [](Plain& plain, const std::string& name) { return plain.archive.exist(name.c_str()) != 0; },
      [](Plain& plain, const std::string& name) { return plain.floor.find(name); });
}

Operation plainReading(const Workspace& workspace, std::size_t entries, const std::string& count) {
  return plainCalls(
      "extract to memory, 20 calls on " + count, workspace, entries,
      [bytes = std::vector<unsigned char>()](Plain& plain, const std::string& name) mutable {
        return plain.archive.extract(name.c_str(), bytes) != 0;
      },
      [bytes = std::vector<unsigned char>()](Plain& plain, const std::string& name) mutable {
        return plain.floor.read(name, bytes);
      });
}

}  // namespace

std::vector<Operation> readingOperations(const Workspace& workspace) {
  const auto archives = std::make_shared<Archives>(workspace);
  std::vector<Operation> operations{lookup(archives), reading(archives)};
  struct Size {
    std::size_t entries;
    const char* name;
  };
  constexpr Size kSizes[] = {
      {100, "100"}, {10'000, "10,000"}, {100'000, "100,000"}, {1'000'000, "1,000,000"}};
  for (const auto& [entries, count] : kSizes) {
    operations.push_back(plainLookup(workspace, entries, count));
    operations.push_back(plainReading(workspace, entries, count));
  }
  return operations;
}

}  // namespace bench
