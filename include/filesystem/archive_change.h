#pragma once
/// @file
/// Changing zip archives (PKWARE APPNOTE): insertions and removals that come into effect together,
/// and packing a folder, with reasons and progress.
///
/// @code
/// using namespace FileSystem;
/// ArchiveChange change;
/// change.remove("old.txt");
/// change.insertFile("C:\\data\\new.txt", "new.txt");
/// const Report report = change.apply("C:\\data\\notes.zip");
/// if (!report) showFailures(report);
/// @endcode

#include <filesystem/export.h>
#include <filesystem/options.h>
#include <filesystem/results.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace FileSystem {

/// Provides the content of a new entry piece by piece: writes at most `size` bytes to `buffer`, and
/// returns their number, 0 at the end, or a negative number if the content cannot be read. An
/// exception from it ends the call, and then leaves the call; the archive is unchanged.
using ContentSource = std::function<std::ptrdiff_t(unsigned char* buffer, std::size_t size)>;

/// Removals and insertions that are applied to an archive in one step: all of them or none.
///
/// The functions that collect them read no file; apply() does. Names of entries are texts in the
/// process code page, new ones of 1 to 260 bytes. Letter case counts. Paths, names and comments end at
/// their first zero byte. A `\` of a new name is stored as `/`, so that every program finds the folder.
/// Names that differ only in `\` and `/` are those of one entry: an insertion replaces it. With
/// ExistingFiles::Keep it fails with Reason::Exists.
class FILESYSTEM_API ArchiveChange {
 public:
  ArchiveChange();  ///< Has no removals and insertions.
  /// Takes those of `other`, which is left for destruction or assignment only.
  ArchiveChange(ArchiveChange&& other) noexcept;
  /// Drops its own, and takes those of `other` as the move constructor does.
  ArchiveChange& operator=(ArchiveChange&& other) noexcept;
  ~ArchiveChange();  ///< Drops them.

  /// Removes all entries of exactly this name.
  /// @param name name of the entries
  void remove(const std::string& name);
  /// Inserts a file, with its last write time, permissions and attributes. A link is followed.
  /// @param file    path of the file
  /// @param name    name of the entry
  /// @param comment comment of the entry
  void insertFile(const std::string& file, const std::string& name,
                  const std::string& comment = std::string());
  /// Inserts a folder itself, without what is in it, with its last write time and permissions.
  /// @param folder path of the folder
  /// @param name   name of the entry, with or without a separator at its end
  void insertFolder(const std::string& folder, const std::string& name);
  /// Inserts a symbolic link itself, with its last write time. On Windows it fails with
  /// Reason::NotAFile.
  /// @param link path of the link
  /// @param name name of the entry
  void insertLink(const std::string& link, const std::string& name);
  /// Inserts bytes, with the present time.
  /// @param bytes   the content
  /// @param name    name of the entry
  /// @param comment comment of the entry
  void insertBytes(std::vector<unsigned char> bytes, const std::string& name,
                   const std::string& comment = std::string());
  /// Inserts what a callback provides, of any length that an archive takes, with the present time.
  /// The memory is a few MB for any length.
  /// @param source  called by apply() until it returns 0 or less
  /// @param name    name of the entry
  /// @param comment comment of the entry
  void insertFrom(ContentSource source, const std::string& name,
                  const std::string& comment = std::string());

  /// Applies the removals, and then the insertions. If one fails or the call is cancelled, the
  /// archive is unchanged. Afterwards, the object has none of them.
  /// @param archive path of the archive. A missing file, or one without bytes, becomes an archive.
  /// @param options password, encryption and level of the new entries; what they keep of the files;
  ///                what is done with an existing entry; progress
  /// @return an item for each removal and insertion, removals first, by the name of the entry. If one
  ///         fails, it is the last item, and Report::reason is its reason. Of several files, all are
  ///         opened before the first one is read: the items up to the last that cannot be opened, each
  ///         with its reason, and Report::reason is that of the first. With Reason::Damaged, the
  ///         only item is an entry that stays and cannot be copied. Without an item, Report::reason
  ///         is Reason::Cancelled, or why the archive cannot be written.
  Report apply(const char* archive, const Options& options = Options());

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// Packs a folder with all files, links and folders in it into a new archive, or changes nothing.
///
/// Entries are named by their paths below the folder, stored with `/`; that of the folder itself is
/// `./`. On Windows links are followed. FRT_UNZIP_FILE stops at an entry that is a folder: an archive
/// for it is packed with Options::setFolders(false). The archive itself is not packed if it lies in
/// the folder. All files are checked before the first one is packed. An existing archive keeps its
/// content until the new one is complete.
/// @param folder  the folder, with or without trailing separator, not null
/// @param archive path of the archive, not null
/// @param options password, encryption, level, progress, what is kept
/// @return an item for each file, link and folder, by its path below the folder: those that were
///         packed, or those that the check rules out, or the one that failed. The path of the folder
///         itself is empty.
///         What is neither a file nor a folder is left out with Reason::NotAFile, and does not end
///         the call. Report::reason is Reason::None if the archive was written.
FILESYSTEM_API Report packFolder(const char* folder, const char* archive,
                                 const Options& options = Options());

}  // namespace FileSystem
