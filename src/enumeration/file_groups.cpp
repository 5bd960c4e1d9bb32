// Lists of the files of a folder by pattern: names, and groups that differ only in their extension.

#include <filesystem/enumeration.h>
#include <filesystem/files.h>
#include <filesystem/path.h>

#include <boost/format.hpp>
#include <cstdarg>
#include <optional>
#include <set>

#include "enumeration/search.h"
#include "path/split_path.h"

namespace FileSystem {
namespace {

struct LessIgnoringCase {
  bool operator()(const std::string& a, const std::string& b) const {
    return lstrcmpiA(a.c_str(), b.c_str()) < 0;
  }
};

// Tests the existence of a folder's files by base name and extension. Ignores the letter case of
// the extension, also on file systems that are case-sensitive.
class Siblings {
 public:
  explicit Siblings(std::string folder) : folder_(std::move(folder)) {}

  bool exist(const std::string& base, const std::string& extension) {
    const std::string path = str(boost::format("%s%s%s") % folder_ % base % extension);
    if (FileExists(path.c_str()) != 0) return true;
    if (!names_) list();
    const auto [first, last] = names_->equal_range(base + extension);
    for (auto name = first; name != last; ++name) {
      if (name->starts_with(base) && FileExists((folder_ + *name).c_str()) != 0) return true;
    }
    return false;
  }

 private:
  void list() {
    names_.emplace();
    for (Detail::Search search(folder_ + '*'); search.next();) {
      if (!search.isFolder()) names_->insert(search.entry().cFileName);
    }
  }

  const std::string folder_;
  std::optional<std::multiset<std::string, LessIgnoringCase>> names_;
};

bool endsWith(const std::string& name, const std::string& extension) {
  return name.size() >= extension.size() &&
         lstrcmpiA(name.c_str() + (name.size() - extension.size()), extension.c_str()) == 0;
}

// Calls `found` with the base name of each file that exists with all extensions; with none, of no
// file. Returns their number.
template <typename Found>
std::uint64_t enumerateGroups(const char* folder, const char* mask,
                              const std::vector<std::string>& extensions, Found found) {
  if (extensions.empty()) return 0;
  std::uint64_t count = 0;
  Siblings siblings(folder);
  for (Detail::Search search(std::string(folder) + mask + extensions.front()); search.next();) {
    if (search.isFolder()) continue;
    const std::string name = search.entry().cFileName;
    if (!endsWith(name, extensions.front())) continue;
    const std::string base(Detail::splitPath(name).name);
    bool complete = true;
    for (const std::string& extension : extensions) {
      complete = complete && siblings.exist(base, extension);
    }
    if (!complete) continue;
    found(base);
    ++count;
  }
  return count;
}

// Returns the extensions of a call, which end with a null pointer.
std::vector<std::string> extensionsOf(const char* first, std::va_list more) {
  std::vector<std::string> extensions;
  for (const char* extension = first; extension != nullptr; extension = va_arg(more, const char*)) {
    extensions.emplace_back(extension);
  }
  return extensions;
}

}  // namespace

std::uint64_t EnumFiles(std::vector<std::string>& result, const char* folder, const char* mask,
                        const char* extension, ...) {
  std::va_list more;
  va_start(more, extension);
  const std::vector<std::string> extensions = extensionsOf(extension, more);
  va_end(more);
  return enumerateGroups(folder, mask, extensions,
                         [&](const std::string& base) { result.push_back(base); });
}

std::uint64_t EnumFiles(std::vector<std::string>& result, const char* folder, const char* pattern) {
  const std::size_t before = result.size();
  for (Detail::Search search(std::string(folder) + pattern); search.next();) {
    if (!search.isFolder()) result.push_back(extractFilename(search.entry().cFileName));
  }
  return result.size() - before;
}

std::uint64_t EnumFiles(CStringArray& result, const char* folder, const char* mask,
                        const char* extension, ...) {
  std::va_list more;
  va_start(more, extension);
  const std::vector<std::string> extensions = extensionsOf(extension, more);
  va_end(more);
  return enumerateGroups(folder, mask, extensions, [&](const std::string& base) {
    result.SetAtGrow(result.GetSize(), CString(base.c_str()));
  });
}

}  // namespace FileSystem
