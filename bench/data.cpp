#include "data.h"

#include <linux/magic.h>
#include <sys/vfs.h>
#include <zip.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace fs = std::filesystem;

namespace bench {
namespace {

constexpr std::array kEighths = {1, 2, 4, 8};
constexpr std::size_t kTreeFiles = 20000;
constexpr std::size_t kLargeFile = 100'000'000;

bool isInMemory(const std::string& folder) {
  struct statfs status {};
  return statfs(folder.c_str(), &status) == 0 && status.f_type == TMPFS_MAGIC;
}

bool holdsManyFiles(const std::string& folder) {
  constexpr std::ptrdiff_t kMany = 100;
  std::error_code missing;
  return std::distance(fs::recursive_directory_iterator(folder, missing), {}) > kMany;
}

bool isSource(const fs::path& path) {
  static constexpr std::string_view kExtensions[] = {
      ".h",  ".hpp", ".c",   ".cpp", ".ipp", ".tcc", ".py",   ".pl",  ".pm",  ".sh",
      ".in", ".am",  ".xml", ".js",  ".css", ".txt", ".json", ".yml", ".def", ".cmake"};
  const std::string extension = path.extension().string();
  return std::find(std::begin(kExtensions), std::end(kExtensions), extension) !=
         std::end(kExtensions);
}

// Returns this machine's source files, in the order of their paths.
const std::vector<fs::path>& sourceFiles() {
  static const std::vector<fs::path> files = [] {
    std::vector<fs::path> found;
    for (const char* root : {"/usr/include", "/usr/lib", "/usr/share"}) {
      const auto options = fs::directory_options::skip_permission_denied;
      for (const auto& entry : fs::recursive_directory_iterator(root, options)) {
        constexpr std::uintmax_t kLargest = 200'000;
        if (!entry.is_regular_file() || entry.is_symlink() || !isSource(entry.path())) continue;
        // The library lists no longer paths.
        if (entry.file_size() <= kLargest && entry.path().string().size() < 150) {
          found.push_back(entry.path());
        }
      }
    }
    if (found.empty()) throw std::runtime_error("this machine has no source files");
    std::sort(found.begin(), found.end());
    return found;
  }();
  return files;
}

// Copies a number of source files, spread evenly over all files of the machine, so that trees of
// all sizes are alike. If there are too few, copies them again below another directory.
void makeTree(const fs::path& target, std::size_t count) {
  const std::vector<fs::path>& files = sourceFiles();
  const std::size_t most = std::max(count, files.size());
  for (std::size_t made = 0; made < count; ++made) {
    const std::size_t at = made * most / count;
    const fs::path& source = files[at % files.size()];
    const fs::path top = target / ("copy" + std::to_string(at / files.size()));
    const fs::path place = top / source.relative_path();
    fs::create_directories(place.parent_path());
    fs::copy_file(source, place);
    fs::permissions(place, fs::perms::owner_write, fs::perm_options::add);
  }
}

void writeFile(const fs::path& path, const std::string& content) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary)
      .write(content.data(), static_cast<std::streamsize>(content.size()));
}

std::string randomBytes(std::size_t size) {
  std::mt19937_64 random(1);
  std::string bytes(size, '\0');
  for (std::size_t i = 0; i + 8 <= size; i += 8) {
    const std::uint64_t value = random();
    std::memcpy(bytes.data() + i, &value, sizeof(value));
  }
  return bytes;
}

void makeArchive(const std::string& path, std::size_t count) {
  int error = 0;
  zip_t* const archive = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
  if (archive == nullptr) throw std::runtime_error("libzip cannot make " + path);
  constexpr std::size_t kContent = 500;
  static const std::string text = sourceText(kContent * 64);
  for (std::size_t i = 0; i < count; ++i) {
    const char* const content = text.data() + i % 64 * (kContent - 7);
    zip_source_t* const source = zip_source_buffer(archive, content, kContent, 0);
    zip_file_add(archive, entryName(i).c_str(), source, 0);
  }
  if (zip_close(archive) != 0) throw std::runtime_error("libzip cannot write " + path);
}

}  // namespace

std::string entryName(std::size_t i) {
  return "folder" + std::to_string(i % 100) + "/entry" + std::to_string(i) + ".txt";
}

std::string sourceText(std::size_t size) {
  std::string text;
  text.reserve(size);
  while (text.size() < size) {
    for (const fs::path& path : sourceFiles()) {
      std::ostringstream content;
      content << std::ifstream(path, std::ios::binary).rdbuf();
      text += content.str();
      if (text.size() >= size) break;
    }
  }
  text.resize(size);
  return text;
}

Workspace::Workspace(const std::string& folder, std::size_t scale)
    : folder_(folder), scale_(scale) {
  fs::remove_all(folder_);
  fs::create_directories(folder_);
  inMemory_ = isInMemory(folder_);
  const std::string text = sourceText(scaled(kLargeFile));
  const std::string noise = randomBytes(scaled(kLargeFile));
  for (const int eighths : kEighths) {
    const std::size_t part = static_cast<std::size_t>(eighths);
    const std::string suffix = std::to_string(eighths);
    const auto place = [&](const char* kind) { return folder_ + '/' + kind + suffix; };
    trees_.push_back(place("tree"));
    makeTree(trees_.back(), scaled(kTreeFiles) / 8 * part);
    texts_.push_back(place("text"));
    writeFile(texts_.back() + "/text.txt", text.substr(0, text.size() / 8 * part));
    noises_.push_back(place("noise"));
    writeFile(noises_.back() + "/noise.bin", noise.substr(0, noise.size() / 8 * part));
  }
}

Workspace::~Workspace() {
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

const std::string& Workspace::archive(std::size_t entries, int eighths) const {
  const std::size_t count = scaled(entries, eighths);
  const auto [archive, isNew] =
      archives_.try_emplace(count, path("of" + std::to_string(count) + ".zip"));
  if (isNew) makeArchive(archive->second, count);
  return archive->second;
}

std::string Workspace::fresh(const std::string& name) const {
  fs::remove_all(path(name));
  return path(name);
}

std::string Workspace::emptyFolder(const std::string& name) const {
  if (!inMemory_ && holdsManyFiles(path(name))) {
    fs::rename(path(name), path("renamed-" + std::to_string(renamed_++)));
  }
  fs::create_directories(fresh(name));
  return path(name);
}

std::size_t Workspace::indexOf(int eighths) {
  return static_cast<std::size_t>(std::find(kEighths.begin(), kEighths.end(), eighths) -
                                  kEighths.begin());
}

}  // namespace bench
