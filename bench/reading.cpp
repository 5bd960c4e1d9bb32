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
  Archives(const Workspace& workspace, std::size_t entries)
      : workspace_(workspace), entries_(entries) {}

  const Opened& get(int eighths) {
    const std::size_t entries = entries_ / 8 * static_cast<std::size_t>(eighths);
    return opened_.try_emplace(eighths, workspace_.largeArchive(eighths), entries).first->second;
  }

 private:
  const Workspace& workspace_;
  std::size_t entries_;
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

using OpenPlain = std::function<std::shared_ptr<Plain>(int eighths)>;

// `call` and `floor` make one call each, by name.
Operation plainCalls(const std::string& name, const OpenPlain& open,
                     const std::function<bool(Plain&, const std::string&)>& call,
                     const std::function<bool(Plain&, const std::string&)>& floor) {
  const auto timedCalls = [=](int eighths, const auto& one) {
    const std::shared_ptr<Plain> plain = open(eighths);
    return timed([&] {
      for (const std::string& entry : plain->names) require(one(*plain, entry), name.c_str());
    });
  };
  return {.name = name,
          .target = 1.2,
          .ours = [=](int eighths) { return timedCalls(eighths, call); },
          .peers = {{"its system calls and a search", [=] { return timedCalls(8, floor); }}},
          .note = {}};
}

Operation plainLookup(const std::string& entries, const OpenPlain& open) {
  return plainCalls(
      "exist, 20 calls on " + entries, open,
      [](Plain& plain, const std::string& name) { return plain.archive.exist(name.c_str()) != 0; },
      [](Plain& plain, const std::string& name) { return plain.floor.find(name); });
}

Operation plainReading(const std::string& entries, const OpenPlain& open) {
  return plainCalls(
      "extract to memory, 20 calls on " + entries, open,
      [bytes = std::vector<unsigned char>()](Plain& plain, const std::string& name) mutable {
        return plain.archive.extract(name.c_str(), bytes) != 0;
      },
      [stored = std::vector<unsigned char>()](Plain& plain, const std::string& name) mutable {
        return plain.floor.find(name, &stored);
      });
}

}  // namespace

std::vector<Operation> readingOperations(const Workspace& workspace) {
  const auto archives = std::make_shared<Archives>(workspace, workspace.scaled(100'000));
  const OpenPlain small = [&](int eighths) {
    const std::size_t entries = workspace.scaled(10'000) / 8 * static_cast<std::size_t>(eighths);
    return std::make_shared<Plain>(workspace.smallArchive(eighths), entries);
  };
  const OpenPlain large = [&](int eighths) {
    const std::size_t entries = workspace.scaled(100'000) / 8 * static_cast<std::size_t>(eighths);
    return std::make_shared<Plain>(workspace.largeArchive(eighths), entries);
  };
  return {lookup(archives),
          reading(archives),
          plainLookup("10,000", small),
          plainReading("10,000", small),
          plainLookup("100,000", large),
          plainReading("100,000", large)};
}

}  // namespace bench
