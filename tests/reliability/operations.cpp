#include "operations.h"

#include "library/zip.h"
#include "support/noise.h"

namespace operations {
namespace {

using FileSystem::ArchiveChange;
using FileSystem::packFolder;
using In = const std::string&;  // the folder of the operation

const std::string kText(100000, 'l');

// Returns more than the library writes in one call.
const Bytes& muchNoise() {
  static const Bytes noise = bytesOf(support::noise(4300000));
  return noise;
}

ZipArchive opened(const std::string& folder, unsigned int access) {
  ZipArchive archive;
  archive.open((folder + "a.zip").c_str(), access);
  return archive;
}
ZipArchive writable(const std::string& folder) { return opened(folder, kReadWrite); }
ZipArchive readable(const std::string& folder) { return opened(folder, kRead); }

bool extracts(const std::string& folder, const char* target) {
  return readable(folder).extract("deep\\old", (folder + target).c_str()) == 1;
}

bool packs(const std::string& folder, const char* archive) {
  return FRT_ZIP_FOLDER((folder + "in").c_str(), (folder + archive).c_str());
}

bool copies(const std::string& folder, const char* target, long files = 2) {
  return FileSystem::CopyContent(folder + "in/", folder + target) == files;
}

bool applies(ArchiveChange& change, const std::string& folder, const char* archive) {
  return static_cast<bool>(change.apply((folder + archive).c_str()));
}

// Gives the archive a second name, beside the folder, so that no new file can take its place.
bool links(const std::string& folder) {
  const std::string other = folder.substr(0, folder.size() - 1) + ".link";
  std::error_code error;
  std::filesystem::remove(other, error);
  std::filesystem::create_hard_link(folder + "a.zip", other, error);
  return !error;
}

const Operation kOperations[] = {
    {"insert", [](In in) { return writable(in).insert(bytesOf(kText), "new", "", 0) == 1; }},
    {"insert_a_file",
     [](In in) {
       return writable(in).insert((in + "in/deep/large").c_str(), "new", nullptr, 0) == 1;
     }},
    {"insert_into_many", [](In in) { return writable(in).insert({'x'}, "new", "", 0) == 1; },
     kMany},
    {"insert_much",
     [](In in) { return writable(in).insert(bytesOf(support::noise(70000)), "new", "", 0) == 1; }},
    {"insert_more_than_is_written_at_once",
     [](In in) { return writable(in).insert(muchNoise(), "new", "", 0) == 1; }, kLarge},
    {"insert_into_an_empty_file",
     [](In in) {
       ZipArchive archive;
       return archive.open((in + "empty.zip").c_str(), kReadWrite) == 1 &&
              archive.insert(bytesOf(support::noise(70000)), "new", "", 0) == 1;
     },
     kEmpty},
    {"replace", [](In in) { return writable(in).insert({'n'}, "deep\\old", "", 1) == 1; }},
    {"change_by_appending",
     [](In in) {
       ArchiveChange change;
       change.insertFile(in + "in/small", "new");
       change.insertFile(in + "in/deep/large", "newer");
       return applies(change, in, "a.zip");
     }},
    {"change_by_appending_much",
     [](In in) {
       ArchiveChange change;
       change.insertBytes({'x'}, "new");
       change.insertBytes(muchNoise(), "newer");
       return applies(change, in, "a.zip");
     },
     kLarge},
    {"change_by_rewriting",
     [](In in) {
       ArchiveChange change;
       change.remove("deep\\old");
       change.insertFile(in + "in/deep/large", "kept");
       return applies(change, in, "a.zip");
     }},
    {"change_in_place",
     [](In in) {
       ArchiveChange change;
       change.remove("kept");
       change.insertFile(in + "in/small", "new");
       return links(in) && applies(change, in, "a.zip");
     }},
    {"change_of_nothing_to_an_archive",
     [](In in) {
       ArchiveChange change;
       change.insertFile(in + "in/small", "new");
       change.insertBytes(bytesOf(kText), "newer");
       return applies(change, in, "b.zip");
     }},
    {"pack_folder",
     [](In in) {
       return static_cast<bool>(packFolder((in + "in").c_str(), (in + "a.zip").c_str()));
     }},
    {"remove", [](In in) { return writable(in).remove("kept") == 1; }},
    {"create", [](In in) { return ZipArchive().create((in + "b.zip").c_str(), 0) == 1; }, kInParts},
    {"create_over_an_archive",
     [](In in) { return ZipArchive().create((in + "a.zip").c_str(), 1) == 1; }, kInParts},
    {"remove_in_place", [](In in) { return links(in) && writable(in).remove("kept") == 1; }},
    {"replace_in_place",
     [](In in) { return links(in) && writable(in).insert({'n'}, "deep\\old", "", 1) == 1; }},
    {"create_in_place",
     [](In in) { return links(in) && ZipArchive().create((in + "a.zip").c_str(), 1) == 1; },
     kInParts},
    {"pack_in_place", [](In in) { return links(in) && packs(in, "a.zip"); },
     kInParts | kPassesOver},
    {"list",
     [](In in) {
       std::vector<std::string> names;
       return readable(in).enumerate(names) == 1 && names.size() == 2;
     }},
    {"extract_to_memory",
     [](In in) {
       Bytes bytes;
       return readable(in).extract("deep\\old", bytes) == 1 && bytes == bytesOf(kText);
     }},
    {"extract_to_a_new_file", [](In in) { return extracts(in, "new/file"); }},
    {"extract_over_a_file", [](In in) { return extracts(in, "out/small"); }},
    {"unpack", [](In in) { return FRT_UNZIP_FILE((in + "a.zip").c_str(), (in + "out").c_str()); },
     kInParts | kPassesOver},
    {"unpack_with_times",
     [](In in) {
       FileSystem::Archive archive;
       return archive.open((in + "a.zip").c_str()) == FileSystem::Reason::None &&
              archive.unpack(archive.entries(), (in + "out").c_str());
     },
     kInParts},
    {"pack", [](In in) { return packs(in, "b.zip"); }, kInParts | kPassesOver},
    {"pack_over_an_archive", [](In in) { return packs(in, "a.zip"); }, kInParts | kPassesOver},
    {"copy_over_files", [](In in) { return copies(in, "out/"); }, kInParts},
    {"copy_over_many_files", [](In in) { return copies(in, "out/", 10); }, kInParts | kManyFiles},
    {"copy_to_new_files", [](In in) { return copies(in, "new/"); }, kInParts},
    {"copy_a_file",
     [](In in) {
       return FileSystem::CopyFileA((in + "in/small").c_str(), (in + "out/").c_str(), 0) != 0;
     }},
    {"copy_a_file_to_a_new_name",
     [](In in) {
       return FileSystem::CopyFileA((in + "in/small").c_str(), (in + "out/deep/").c_str(), 0) != 0;
     }},
    {"make_folders",
     [](In in) { return FileSystem::EnsurePathExists((in + "x/y/z").c_str()) != 0; }},
    {"read_a_file", [](In in) { return FileSystem::readContent(in + "in/deep/large") == kText; }},
    {"probe",
     [](In in) {
       const std::string path = in + "in/small";
       return FileSystem::FileExists(path.c_str()) != 0 &&
              FileSystem::AllowedAccess(path.c_str()) == kReadWrite &&
              FileSystem::IsValidPath(in.c_str()) != 0;
     }},
    {"list_a_tree",
     [](In in) {
       std::vector<std::string> files;
       return FileSystem::EnumFilesWithPath(files, in.c_str(), "*", true) == 6;
     }},
    {"temporary_storage",
     [](In in) {
       FileSystem::TemporaryStorage storage;
       return storage.create(in.substr(0, in.size() - 1), false) &&
              FileSystem::writeContent(storage.path() + "file", "content");
     },
     kInParts | kPassesOver},
    {"lock_file",
     [](In in) {
       return FileSystem::CreateLockFile(in.c_str()) != 0 &&
              FileSystem::DeleteLockFile(in.c_str()) != 0;
     }},
};

}  // namespace

std::span<const Operation> all() { return kOperations; }

void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }

Files contentsOf(const std::filesystem::path& folder, bool entries) {
  Files files;
  for (const auto& item : std::filesystem::recursive_directory_iterator(folder)) {
    if (!item.is_regular_file()) continue;
    std::string& content = files[item.path().lexically_relative(folder).string()];
    if (!entries || item.path().extension() != ".zip") {
      content = support::readFile(item.path().string());
      continue;
    }
    for (const auto& [name, bytes] : entriesOf(item.path().string())) {
      content += name + '=' + bytes + '\n';
    }
  }
  return files;
}

void prepare(const std::string& folder, const Operation& operation) {
  support::writeFile(folder + "in/small", "new");
  support::writeFile(folder + "in/deep/large", kText);
  support::writeFile(folder + "out/small", "old");
  support::writeFile(folder + "out/deep/large", "old");
  support::writeFile(folder + "out/deep/old", "old");
  if (operation.is(kEmpty)) support::writeFile(folder + "empty.zip", "");
  for (int i = 0; operation.is(kManyFiles) && i < 8; ++i) {
    support::writeFile(folder + "in/" + std::to_string(i), "new");
    support::writeFile(folder + "out/" + std::to_string(i), "old");
  }
  ZipArchive archive;
  ASSERT_EQ(archive.create((folder + "a.zip").c_str(), 0), 1);
  ASSERT_EQ(archive.insert(bytesOf("kept"), "kept", "", 0), 1);
  ASSERT_EQ(archive.insert(bytesOf(kText), "deep\\old", "", 0), 1);
  for (int i = 0; operation.is(kMany) && i < 20; ++i) {
    const std::string name = std::to_string(i) + std::string(200, 'n');
    // Longer than two sectors of a disk.
    const std::string comment(i % 8 == 0 ? 1200 : 0, 'c');
    ASSERT_EQ(archive.insert({'m'}, name, comment, 0), 1);
  }
}

}  // namespace operations
