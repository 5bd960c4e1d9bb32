// Reads arbitrary bytes through Archive: records, contents, and entries that the archive lacks.

#include <filesystem/archive.h>

#include <algorithm>
#include <string>
#include <vector>

#include "workplace.h"

namespace {

using FileSystem::Archive;
using FileSystem::Entry;
using FileSystem::Options;
using FileSystem::Reason;
using FileSystem::Report;

constexpr std::size_t kMostEntries = 24;

// Any number is a position: it is that of an entry, or the entry is missing.
void readAnywhere(const Archive& archive, const std::uint8_t* data, std::size_t size) {
  Entry entry;
  for (std::size_t i = 0; i < std::min<std::size_t>(size, 8); ++i) {
    entry.position = entry.position << 8 | data[i];
    std::vector<unsigned char> bytes;
    fuzz::require(archive.readAll(entry, bytes) == Reason::None || bytes.empty(),
                  "a failure delivers no bytes");
  }
}

// Also gives the user back what the archive has taken, so that the folder can be removed.
void requireNoSetId(const std::filesystem::path& folder) {
  using std::filesystem::perms;
  std::error_code ignored;
  std::filesystem::permissions(folder, perms::owner_all, std::filesystem::perm_options::add,
                               ignored);
  for (const auto& item : std::filesystem::directory_iterator(folder, ignored)) {
    const perms permissions = item.symlink_status(ignored).permissions();
    fuzz::require((permissions & (perms::set_uid | perms::set_gid)) == perms::none,
                  "no set-id bits are unpacked");
    if (item.is_directory(ignored) && !item.is_symlink(ignored)) requireNoSetId(item.path());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::Workplace& work = fuzz::Workplace::instance();
  const std::string path = work.write("a.zip", data, size);
  const std::filesystem::path inner = work.path() / "target" / "inner";
  std::filesystem::create_directories(inner);
  Archive archive;
  if (archive.open(path.c_str()) == Reason::None) {
    std::vector<Entry> entries = archive.entries();
    for (const Entry& entry : entries) {
      fuzz::require(
          archive.contains(entry.name.c_str()) || entry.name.find('\0') < entry.name.size(),
          "a name that is listed is found");
    }
    fuzz::require(archive.unusedBytes() <= size, "no more bytes are unused than there are");
    readAnywhere(archive, data, size);
    entries.resize(std::min(entries.size(), kMostEntries));
    const Options options = Options().setPassword("secret");
    const Report tested = archive.test(entries, options);
    fuzz::require(tested.items.size() == entries.size(), "each entry is tested");
    archive.unpack(entries, inner.string().c_str(), options);
    for (const auto& item : std::filesystem::directory_iterator(work.path() / "target")) {
      fuzz::require(item.path().filename() == "inner", "nothing is written outside");
    }
    requireNoSetId(inner);
    archive.close();
  }
  fuzz::require(work.read("a.zip") == fuzz::textOf(data, size), "reading changes nothing");
  std::error_code ignored;
  std::filesystem::remove_all(work.path() / "target", ignored);
  return 0;
}
