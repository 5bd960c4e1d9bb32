#pragma once
/// @file
/// A folder of one's own that goes away with its object.

#include <filesystem/export.h>

#include <string>

namespace FileSystem {

/// A freshly named folder under a base folder, deleted with all it holds by
/// clear() or with the object.
///
/// A copy is a second owner of the same folder: the first of them that is
/// cleared or destroyed deletes it. One object belongs to one thread at a time.
class FILESYSTEM_API TemporaryStorage {
 public:
  /// No folder. Nothing is done on disk.
  TemporaryStorage();
  /// A second owner of the folder of `other`.
  TemporaryStorage(const TemporaryStorage& other);
  /// Becomes a second owner of the folder of `other`. The folder that this
  /// object had stays on disk.
  TemporaryStorage& operator=(const TemporaryStorage& other);
  /// clear().
  ~TemporaryStorage();

  /// Makes a new folder, named by a new GUID in braces. A folder that the
  /// object already has is cleared first, even if the call then fails.
  /// @param base       existing folder that can be written to, with or without
  ///                   trailing `\`
  /// @param removeBase whether clear() removes `base` too, if it is empty by then
  /// @return false if `base` cannot be used
  bool create(const std::string& base, bool removeBase);
  /// Deletes the folder and all it holds, except read-only files, files that are open without
  /// delete sharing, and the folders that hold them. Links are deleted, never followed, also if
  /// another process replaces a folder with a link meanwhile.
  void clear();
  /// The folder, with trailing `\`; empty before the first create(), and still
  /// the old text after clear().
  std::string path() const;
  /// The base folder, with trailing `\`; empty before the first create().
  std::string basePath() const;

 private:
  bool m_created;
  bool m_removeBase;
  std::string m_basePath;
  std::string m_path;
};

}  // namespace FileSystem
