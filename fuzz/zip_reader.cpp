// Lists, extracts and removes the entries of arbitrary bytes.

#include <filesystem/zip.h>
#include <filesystem/zip_archive.h>

#include <algorithm>

#include "workplace.h"

namespace {

constexpr unsigned int kRead = 0x80000000;
constexpr unsigned int kReadWrite = 0xC0000000;
constexpr std::size_t kMostEntries = 24;

void requireNothingOutside(const fuzz::Workplace& work) {
  for (const auto& item : std::filesystem::directory_iterator(work.path())) {
    const std::string name = item.path().filename().string();
    fuzz::require(name == "a.zip" || name == "tmp" || name == "target",
                  "nothing is written outside");
  }
  for (const auto& item : std::filesystem::directory_iterator(work.path() / "target")) {
    fuzz::require(item.path().filename() == "inner", "nothing is written outside");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::Workplace& work = fuzz::Workplace::instance();
  const std::string path = work.write("a.zip", data, size);
  const std::filesystem::path inner = work.path() / "target" / "inner";
  std::filesystem::create_directories(inner);

  std::vector<std::string> names;
  {
    ZipArchive archive;
    fuzz::require(archive.open(path.c_str(), kRead) == 1, "any file can be held");
    archive.password("secret");
    const bool listed = archive.enumerate(names) == 1;
    fuzz::require(!listed || archive.empty() == 0, "an archive with entries is not empty");
    std::vector<std::pair<std::string, std::string>> entries;
    archive.content(entries);
    fuzz::require(!listed || entries.size() <= names.size(), "no more files than entries");
    names.resize(std::min(names.size(), kMostEntries));
    for (const std::string& name : names) {
      std::vector<unsigned char> bytes;
      const int extracted = archive.extract(name.c_str(), bytes);
      fuzz::require(extracted == (bytes.empty() ? 0 : 1), "a failure delivers no bytes");
    }
    archive.extract(names, (inner.string() + "/").c_str());
  }
  if (names.size() < kMostEntries) FRT_UNZIP_FILE(path.c_str(), inner.string().c_str());
  requireNothingOutside(work);
  fuzz::require(work.read("a.zip") == fuzz::textOf(data, size), "reading changes nothing");

  if (!names.empty()) {
    ZipArchive archive;
    archive.open(path.c_str(), kReadWrite);
    const int removed = archive.remove(names.back().c_str());
    fuzz::require(archive.exist(names.back().c_str()) == 0 || removed == 0,
                  "a removed entry is not found");
    archive.close();
    fuzz::require(removed == 1 || work.read("a.zip") == fuzz::textOf(data, size),
                  "a failed removal changes nothing");
  }
  work.requireNoTemporaryFile();
  std::error_code ignored;
  std::filesystem::remove_all(work.path() / "target", ignored);
  return 0;
}
