// A folder of one's own, deleted with its object.

#include <filesystem/files.h>
#include <filesystem/temporary_storage.h>

#include <cstdio>
#include <vector>

#include "enumeration/folder_walk.h"
#include "platform/win32.h"

namespace FileSystem {
namespace {

std::string newName() {
  GUID id{};
  CoCreateGuid(&id);
  char text[40];
  std::snprintf(text, sizeof(text), "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                static_cast<unsigned int>(id.Data1), id.Data2, id.Data3, id.Data4[0], id.Data4[1],
                id.Data4[2], id.Data4[3], id.Data4[4], id.Data4[5], id.Data4[6], id.Data4[7]);
  return text;
}

// Deletes what can be deleted of a folder and all below it. A link goes itself,
// what is behind it stays.
void deleteTree(const std::string& start) {
  std::vector<std::string> folders{start};
  Detail::FolderWalk walk(start, true, Detail::Links::Reported, true);
  walk.run(
      [&](const WIN32_FIND_DATAA& entry) {
        if ((entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
          RemoveDirectoryA(walk.path().c_str());
        } else {
          folders.push_back(walk.path() + '\\');
        }
        return true;
      },
      [&](Detail::Search& file) { file.removeFrom(walk.path()); });
  for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder) {
    RemoveDirectoryA(folder->c_str());
  }
}

}  // namespace

TemporaryStorage::TemporaryStorage() : m_created(false), m_removeBase(false) {}

TemporaryStorage::TemporaryStorage(const TemporaryStorage& other) = default;

TemporaryStorage& TemporaryStorage::operator=(const TemporaryStorage& other) = default;

TemporaryStorage::~TemporaryStorage() { clear(); }

bool TemporaryStorage::create(const std::string& base, bool removeBase) {
  if (m_created) clear();
  if (IsValidPath(base.c_str()) == 0) return false;
  m_removeBase = removeBase;
  m_basePath = Detail::withBackslash(base.c_str());
  m_path = m_basePath + newName() + '\\';
  EnsurePathExists(m_path.c_str());
  m_created = true;
  return true;
}

void TemporaryStorage::clear() {
  const bool exists = m_created && !m_path.empty() && FolderExists(m_path.c_str()) != 0;
  m_created = false;
  if (!exists) return;
  deleteTree(m_path);
  if (m_removeBase && !m_basePath.empty()) RemoveDirectoryA(m_basePath.c_str());
}

std::string TemporaryStorage::path() const { return m_path; }

std::string TemporaryStorage::basePath() const { return m_basePath; }

}  // namespace FileSystem
