#pragma once
/// @file
/// A private folder that is deleted with its object.
///
/// @code
/// FileSystem::TemporaryStorage storage;
/// if (storage.create("C:\\temp", false)) {
///   FileSystem::writeContent(storage.path() + "page.html", page);
/// }  // the folder and its content are deleted here
/// @endcode

#include <filesystem/export.h>

#include <string>

namespace FileSystem {

/// Owns a new folder under a base folder, and deletes it with its content in clear() or with the
/// object.
///
/// A copy is a second owner of the same folder: the first of them that is cleared or destroyed
/// deletes it. An object is used by one thread at a time.
class FILESYSTEM_API TemporaryStorage {
 public:
  /// Creates no folder.
  TemporaryStorage();
  /// Becomes a second owner of the folder of `other`.
  TemporaryStorage(const TemporaryStorage& other);
  /// Becomes a second owner of the folder of `other`. The folder that this object owned stays on
  /// disk.
  TemporaryStorage& operator=(const TemporaryStorage& other);
  /// Calls clear().
  ~TemporaryStorage();

  /// Creates a folder whose name is a new GUID in braces. A folder that the object already owns is
  /// cleared first, even if the call then fails.
  /// @param base       existing folder that can be written to, with or without trailing separator,
  ///                   up to its first zero byte
  /// @param removeBase whether clear() also deletes `base`, if it is empty by then
  /// @return false if IsValidPath denies `base`. True does not promise that the folder could be
  ///         created.
  bool create(const std::string& base, bool removeBase);
  /// Deletes the folder and all it holds, except read-only files, files that are open without
  /// delete sharing, and the folders that hold them. Links are deleted, never followed, also if
  /// another process replaces a folder with a link meanwhile.
  void clear();
  /// Returns the folder, with trailing `\`. Empty before the first create(); unchanged by clear().
  std::string path() const;
  /// Returns the base folder, with trailing `\`. Empty before the first create().
  std::string basePath() const;

 private:
  bool m_created;
  bool m_removeBase;
  std::string m_basePath;
  std::string m_path;
};

}  // namespace FileSystem
