// Creation of folder chains, the test of a folder by a write, and deletion of empty folders.

#include <filesystem/files.h>
#include <filesystem/path.h>

#include <string>
#include <string_view>
#include <vector>

#include "files/attributes.h"
#include "files/make_folders.h"
#include "path/characters.h"
#include "path/fixed_text.h"
#include "platform/unique_handle.h"
#include "platform/win32.h"

namespace FileSystem {
namespace {

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

void trim(std::string& text) {
  text.erase(text.find_last_not_of(kWhiteSpace) + 1);
  text.erase(0, text.find_first_not_of(kWhiteSpace));
}

// Removes the next component from the start of `rest` and returns it; empty at the end. Consecutive
// separators count as one.
std::string_view nextComponent(std::string_view& rest) {
  const auto isOther = [&](std::size_t i) { return !Detail::isSeparator(rest[i]); };
  const auto isSeparator = [&](std::size_t i) { return Detail::isSeparator(rest[i]); };
  const std::size_t start = Detail::findCharacter(rest, 0, isOther);
  const std::size_t end = Detail::findCharacter(rest, start, isSeparator);
  const std::string_view component = rest.substr(start, end - start);
  rest.remove_prefix(end);
  return component;
}

void clearReadOnly(const char* path) {
  const DWORD attributes = GetFileAttributesA(path);
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_READONLY) == 0) return;
  SetFileAttributesA(path, attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
}

// Creates a file with an unused name in a folder, and deletes it with its object.
class ProbeFile {
 public:
  explicit ProbeFile(const char* folder) : created_(GetTempFileNameA(folder, "~", 0, name_) != 0) {}
  ProbeFile(const ProbeFile&) = delete;
  ProbeFile& operator=(const ProbeFile&) = delete;
  ~ProbeFile() {
    if (created_) DeleteFileA(name_);
  }

  explicit operator bool() const { return created_; }
  const char* name() const { return name_; }

 private:
  char name_[MAX_PATH] = {};
  bool created_;
};

}  // namespace

bool Detail::makeFolder(const char* path, std::vector<std::string>* created) {
  if (isDirectory(path)) return true;
  if (CreateDirectoryA(path, nullptr)) {
    clearReadOnly(path);
    if (created != nullptr) created->emplace_back(path);
    return true;
  }
  // Another process may have created it in the meantime.
  return GetLastError() == ERROR_ALREADY_EXISTS;
}

bool Detail::makeFolders(const char* path, std::vector<std::string>* created) {
  CString root;
  PathRoot(path, root);
  const char* const rootText = root;
  std::string folder = rootText;
  const PathText afterRoot(path + folder.size());

  std::string_view rest = afterRoot.view();
  for (std::string_view component = nextComponent(rest); !component.empty();
       component = nextComponent(rest)) {
    folder += component;
    trim(folder);
    folder += '\\';
    if (!makeFolder(folder.c_str(), created)) return false;
  }
  return true;
}

int EnsurePathExists(const char* path) {
  if (path == nullptr) return 0;
  Detail::makeFolders(path);
  return IsValidPath(path);
}

int IsValidPath(const char* path) {
  if (path == nullptr || *path == '\0') return 0;
  const ProbeFile probe(path);
  if (!probe) return 0;
  // Declared after the probe, so that the file is closed before it is deleted.
  const platform::FileHandle file(CreateFileA(probe.name(), GENERIC_READ | GENERIC_WRITE, 0,
                                              nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_ARCHIVE,
                                              nullptr));
  if (!file) return 0;

  constexpr std::string_view kText = "Validated";
  char back[kText.size()];
  DWORD count = 0;
  const BOOL written =
      WriteFile(file.get(), kText.data(), static_cast<DWORD>(kText.size()), &count, nullptr);
  // Reads nothing, at the end of the file. Only the success of the call matters.
  const BOOL read = ReadFile(file.get(), back, sizeof(back), &count, nullptr);
  return written && read ? 1 : 0;
}

int DeleteEmptyFolder(const char* path) {
  if (path == nullptr || !RemoveDirectoryA(path)) return 0;
  CString folder = ParentDirectory(path);
  // RemoveDirectoryA removes a link even if the linked directory has content.
  while (!Detail::isLink(folder) && RemoveDirectoryA(folder)) folder = ParentDirectory(folder);
  return 1;
}

}  // namespace FileSystem
