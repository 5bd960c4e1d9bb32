// Inserts, replaces, removes and extracts in an archive of arbitrary bytes, and checks the promises
// about the entries that it had before.

#include <filesystem/zip_archive.h>

#include <algorithm>
#include <map>
#include <optional>

#include "workplace.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr unsigned int kReadWrite = 0xC0000000;
constexpr std::size_t kMostEntries = 24;

struct Content {
  std::vector<std::string> names;
  std::map<std::string, Bytes> files;  // those that can be read and are not empty
};

Content contentOf(const ZipArchive& archive) {
  Content content;
  archive.enumerate(content.names);
  for (std::size_t i = 0; i < std::min(content.names.size(), kMostEntries); ++i) {
    Bytes bytes;
    if (archive.extract(content.names[i].c_str(), bytes) == 1) {
      content.files[content.names[i]] = std::move(bytes);
    }
  }
  return content;
}

// Returns the number of entries that other programs find: in the directory that directly precedes
// the last end record. Nothing if they find none, or for values of the zip64 format.
std::optional<std::size_t> countByOthers(const std::string& bytes) {
  const auto load = [&](std::size_t at, std::size_t size) {
    std::size_t value = 0;
    while (size-- > 0) value = value << 8 | static_cast<unsigned char>(bytes[at + size]);
    return value;
  };
  if (bytes.size() < 22) return std::nullopt;
  const std::size_t end = bytes.rfind("PK\5\6", bytes.size() - 22);
  if (end == std::string::npos || load(end + 10, 2) == 0xFFFF) return std::nullopt;
  std::size_t count = 0;
  std::size_t at = end - std::min(end, load(end + 12, 4));
  for (; end - at >= 46 && bytes.compare(at, 4, "PK\1\2") == 0; ++count) {
    at += 46 + load(at + 28, 2) + load(at + 30, 2) + load(at + 32, 2);
    if (at > end) return std::nullopt;
  }
  return at == end ? std::optional(count) : std::nullopt;
}

bool sameButForCase(const std::string& first, const std::string& second) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? c | 0x20 : c; };
  return std::equal(first.begin(), first.end(), second.begin(), second.end(),
                    [&](char a, char b) { return lower(a) == lower(b); });
}

// Requires that every entry that could be read before still has its bytes, except `changed`.
void requireOthers(const ZipArchive& archive, const Content& before, const std::string& changed) {
  for (const auto& [name, bytes] : before.files) {
    if (sameButForCase(name, changed)) continue;
    Bytes now;
    fuzz::require(archive.extract(name.c_str(), now) == 1 && now == bytes,
                  "the other entries keep their bytes");
  }
}

void requireEntry(const ZipArchive& archive, const std::string& name, const Bytes& bytes) {
  Bytes now;
  fuzz::require(archive.exist(name.c_str()) == 1, "an inserted entry is found");
  fuzz::require(archive.extract(name.c_str(), now) == (bytes.empty() ? 0 : 1) && now == bytes,
                "an inserted entry has its bytes");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::Workplace& work = fuzz::Workplace::instance();
  const std::string path = work.write("a.zip", data, size);
  // The last byte also chooses the variant.
  const unsigned variant = size == 0 ? 0 : data[size - 1];
  ZipArchive archive;
  fuzz::require(archive.open(path.c_str(), kReadWrite) == 1, "any file can be held");
  if ((variant & 1) != 0) archive.password("secret");
  const auto fileNow = [&] {
    archive.close();
    std::string bytes = work.read("a.zip");
    fuzz::require(archive.open(path.c_str(), kReadWrite) == 1, "the archive can be held again");
    return bytes;
  };

  Content before = contentOf(archive);
  const std::optional<std::size_t> count = countByOthers(std::string(fuzz::textOf(data, size)));
  fuzz::require(!count || before.names.empty() || before.names.size() == *count,
                "the entries are those that other programs find");
  const Bytes first(data, data + std::min<std::size_t>(size, std::size_t{variant} * 8));
  const std::string added = "folder\\added";
  const bool wasThere = archive.exist(added.c_str()) == 1;
  if (archive.insert(first, added, "note", 0) == 1) {
    fuzz::require(!wasThere, "nothing is replaced unasked");
    requireEntry(archive, added, first);
    requireOthers(archive, before, added);
    before.names.push_back(added);
    fuzz::require(contentOf(archive).names == before.names, "a new entry is the last one");
    fuzz::require(!count || countByOthers(fileNow()) == *count + 1,
                  "an insertion loses no entry that other programs find");
  } else {
    fuzz::require(fileNow() == fuzz::textOf(data, size), "a failed insertion changes nothing");
  }

  before = contentOf(archive);
  if (!before.names.empty()) {
    const std::string name = before.names[variant % before.names.size()];
    const Bytes second(variant, 'x');
    if (!name.empty() && archive.insert(second, name, "", 1) == 1) {
      requireEntry(archive, name, second);
      requireOthers(archive, before, name);
    }
  }

  before = contentOf(archive);
  if (!before.names.empty()) {
    const std::string name = before.names[variant / 2 % before.names.size()];
    const std::string bytes = fileNow();
    if (archive.remove(name.c_str()) == 1) {
      fuzz::require(archive.exist(name.c_str()) == 0, "a removed entry is not found");
      requireOthers(archive, before, name);
    } else {
      fuzz::require(fileNow() == bytes, "a failed removal changes nothing");
    }
  }
  archive.close();
  work.requireNoTemporaryFile();
  return 0;
}
