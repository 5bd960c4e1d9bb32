#include "operations.h"

#include <filesystem/enumeration.h>
#include <filesystem/file_stream.h>
#include <filesystem/files.h>
#include <filesystem/stream.h>
#include <filesystem/temporary_storage.h>
#include <filesystem/zip.h>
#include <filesystem/zip_archive.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "support/temporary_folder.h"

namespace operations {
namespace {

constexpr unsigned int kRead = 0x80000000;
constexpr unsigned int kReadWrite = 0xC0000000;

const std::string kLarge(100000, 'l');

std::string textOf(const std::vector<unsigned char>& bytes) { return {bytes.begin(), bytes.end()}; }
std::vector<unsigned char> bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

// Bytes that deflate cannot shrink.
std::string noise(std::size_t size) {
  std::minstd_rand random(1);
  std::string bytes(size, '\0');
  for (char& c : bytes) c = static_cast<char>(random() >> 8);
  return bytes;
}

ZipArchive opened(const std::string& folder, unsigned int access) {
  ZipArchive archive;
  archive.open((folder + "a.zip").c_str(), access);
  return archive;
}

const Operation kOperations[] = {
    {"insert",
     [](const std::string& folder) {
       return opened(folder, kReadWrite).insert(bytesOf(kLarge), "new", "", 0) == 1;
     }},
    {"insert a file",
     [](const std::string& folder) {
       return opened(folder, kReadWrite)
                  .insert((folder + "in/deep/large").c_str(), "new", nullptr, 0) == 1;
     }},
    {"insert into many",
     [](const std::string& folder) {
       ZipArchive archive;
       archive.open((folder + "many.zip").c_str(), kReadWrite);
       return archive.insert(bytesOf("x"), "new", "", 0) == 1;
     },
     false, false, true},
    {"insert much",
     [](const std::string& folder) {
       return opened(folder, kReadWrite).insert(bytesOf(noise(70000)), "new", "", 0) == 1;
     }},
    {"replace",
     [](const std::string& folder) {
       return opened(folder, kReadWrite).insert(bytesOf("newer"), "deep\\old", "", 1) == 1;
     }},
    {"remove",
     [](const std::string& folder) { return opened(folder, kReadWrite).remove("kept") == 1; }},
    {"create",
     [](const std::string& folder) {
       return ZipArchive().create((folder + "b.zip").c_str(), 0) == 1;
     },
     true},
    {"list",
     [](const std::string& folder) {
       std::vector<std::string> names;
       return opened(folder, kRead).enumerate(names) == 1 && names.size() == 2;
     }},
    {"extract to memory",
     [](const std::string& folder) {
       std::vector<unsigned char> bytes;
       return opened(folder, kRead).extract("deep\\old", bytes) == 1 && textOf(bytes) == kLarge;
     }},
    {"extract to a new file",
     [](const std::string& folder) {
       return opened(folder, kRead).extract("deep\\old", (folder + "new/file").c_str()) == 1;
     }},
    {"extract over a file",
     [](const std::string& folder) {
       return opened(folder, kRead).extract("deep\\old", (folder + "out/small").c_str()) == 1;
     }},
    {"unpack",
     [](const std::string& folder) {
       return FRT_UNZIP_FILE((folder + "a.zip").c_str(), (folder + "out").c_str());
     },
     true, true},
    {"pack",
     [](const std::string& folder) {
       return FRT_ZIP_FOLDER((folder + "in").c_str(), (folder + "b.zip").c_str());
     },
     true, true},
    {"pack over an archive",
     [](const std::string& folder) {
       return FRT_ZIP_FOLDER((folder + "in").c_str(), (folder + "a.zip").c_str());
     },
     true, true},
    {"create over an archive",
     [](const std::string& folder) {
       return ZipArchive().create((folder + "a.zip").c_str(), 1) == 1;
     },
     true},
    {"copy over files",
     [](const std::string& folder) {
       return FileSystem::CopyContent(folder + "in/", folder + "out/") == 2;
     },
     true},
    {"copy to new files",
     [](const std::string& folder) {
       return FileSystem::CopyContent(folder + "in/", folder + "new/") == 2;
     },
     true},
    {"copy a file",
     [](const std::string& folder) {
       return FileSystem::CopyFileA((folder + "in/small").c_str(), (folder + "out/").c_str(), 0) !=
              0;
     }},
    {"make folders",
     [](const std::string& folder) {
       return FileSystem::EnsurePathExists((folder + "x/y/z").c_str()) != 0;
     }},
    {"read a file",
     [](const std::string& folder) {
       return FileSystem::readContent(folder + "in/deep/large") == kLarge;
     }},
    {"probe",
     [](const std::string& folder) {
       const std::string path = folder + "in/small";
       return FileSystem::FileExists(path.c_str()) != 0 &&
              FileSystem::AllowedAccess(path.c_str()) == kReadWrite &&
              FileSystem::IsValidPath(folder.c_str()) != 0;
     }},
    {"list a tree",
     [](const std::string& folder) {
       std::vector<std::string> files;
       return FileSystem::EnumFilesWithPath(files, folder.c_str(), "*", true) == 6;
     }},
    {"temporary storage",
     [](const std::string& folder) {
       FileSystem::TemporaryStorage storage;
       return storage.create(folder.substr(0, folder.size() - 1), false) &&
              FileSystem::writeContent(storage.path() + "file", "content");
     },
     true, true},
    {"lock file",
     [](const std::string& folder) {
       return FileSystem::CreateLockFile(folder.c_str()) != 0 &&
              FileSystem::DeleteLockFile(folder.c_str()) != 0;
     }},
};

}  // namespace

std::span<const Operation> all() { return kOperations; }

void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }

std::string testName(const testing::TestParamInfo<Operation>& info) {
  std::string name = info.param.name;
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
}

Files contentsOf(const std::filesystem::path& folder, bool entries) {
  Files files;
  for (const auto& item : std::filesystem::recursive_directory_iterator(folder)) {
    if (!item.is_regular_file()) continue;
    const std::string path = item.path().string();
    const std::string name = item.path().lexically_relative(folder).string();
    files[name] = support::readFile(path);
    if (!entries || item.path().extension() != ".zip") continue;
    ZipArchive archive;
    std::vector<std::string> names;
    std::string content = "archive:";
    archive.open(path.c_str(), kRead);
    archive.enumerate(names);
    for (const std::string& entry : names) {
      std::vector<unsigned char> bytes;
      archive.extract(entry.c_str(), bytes);
      content += "\n" + entry + "=" + textOf(bytes);
    }
    files[name] = content;
  }
  return files;
}

void prepare(const std::string& folder, const Operation& operation) {
  ZipArchive archive;
  ASSERT_EQ(archive.create((folder + "a.zip").c_str(), 0), 1);
  ASSERT_EQ(archive.insert(bytesOf("kept"), "kept", "", 0), 1);
  ASSERT_EQ(archive.insert(bytesOf(kLarge), "deep\\old", "", 0), 1);
  support::writeFile(folder + "in/small", "new");
  support::writeFile(folder + "in/deep/large", kLarge);
  support::writeFile(folder + "out/small", "old");
  support::writeFile(folder + "out/deep/large", "old");
  support::writeFile(folder + "out/deep/old", "old");
  if (!operation.many) return;
  ASSERT_EQ(archive.create((folder + "many.zip").c_str(), 0), 1);
  for (int i = 0; i < 20; ++i) {
    const std::string name = std::to_string(i) + std::string(200, 'n');
    // Longer than two sectors of a disk.
    const std::string comment(i % 8 == 0 ? 1200 : 0, 'c');
    ASSERT_EQ(archive.insert(bytesOf("m"), name, comment, 0), 1);
  }
}

}  // namespace operations
