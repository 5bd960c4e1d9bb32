// A private folder that is deleted with its object.

#include <filesystem/files.h>
#include <filesystem/temporary_storage.h>

#include <boost/format.hpp>
#include <locale>
#include <utility>

#include "files/delete_tree.h"
#include "files/make_folders.h"
#include "files/tree_call.h"
#include "path/with_backslash.h"
#include "path/zero_terminated.h"
#include "platform/win32.h"

namespace FileSystem {
namespace {

// Returns a GUID in braces.
std::string newName() {
  GUID id{};
  CoCreateGuid(&id);
  boost::format name("{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", std::locale::classic());
  name % id.Data1 % id.Data2 % id.Data3;
  for (const unsigned int byte : id.Data4) name % byte;
  return str(name);
}

}  // namespace

TemporaryStorage::TemporaryStorage() : m_created(false), m_removeBase(false) {}

TemporaryStorage::TemporaryStorage(const TemporaryStorage& other) = default;

TemporaryStorage& TemporaryStorage::operator=(const TemporaryStorage& other) = default;

TemporaryStorage::~TemporaryStorage() { clear(); }

bool TemporaryStorage::create(const std::string& base, bool removeBase) {
  clear();
  if (IsValidPath(base.c_str()) == 0) return false;
  m_removeBase = removeBase;
  m_basePath = Detail::withBackslash(Detail::upToZero(base));
  m_path = m_basePath + newName() + '\\';
  // EnsurePathExists would take `/\` for the start of a server name. The base exists, so that it
  // would create no more than this directory.
  Detail::makeFolder(m_path.c_str());
  m_created = true;
  return true;
}

void TemporaryStorage::clear() {
  if (!std::exchange(m_created, false) || FolderExists(m_path.c_str()) == 0) return;
  Detail::TreeCall call;
  Detail::deleteTree(m_path, call);
  if (m_removeBase) RemoveDirectoryA(m_basePath.c_str());
}

std::string TemporaryStorage::path() const { return m_path; }

std::string TemporaryStorage::basePath() const { return m_basePath; }

}  // namespace FileSystem
