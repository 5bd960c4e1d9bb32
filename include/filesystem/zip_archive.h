#pragma once
/// @file
/// Reading and writing of zip archives (PKWARE APPNOTE).

#include <filesystem/export.h>

#include <string>
#include <utility>
#include <vector>

class ZipArchivePrivate;

/// One zip archive on disk. Between calls the object holds the file open, so
/// that nobody else writes to it (opened for reading) or opens it at all
/// (opened for writing).
///
/// Results of type `int` are 0 for failure or no. Entry names are texts in the
/// process code page; separators in them are kept as they are. A copy stands on
/// the same archive: what is done through one object shows in the other. An
/// object and its copies belong to one thread at a time.
///
/// A call that is interrupted, by a full disk or by the end of the process,
/// leaves the archive with all the entries that it had.
class FILESYSTEM_API ZipArchive {
 public:
  /// Bound to no archive, with read and write access.
  ZipArchive();
  /// Shares the state of `other`.
  ZipArchive(const ZipArchive& other);
  /// Shares the state of `other`; lets go of the former state.
  ZipArchive& operator=(const ZipArchive& other);
  /// Lets go of the archive with the last object that shares it.
  virtual ~ZipArchive();

  /// Binds the object to an existing file and holds it.
  /// @param name   path of the archive; null unbinds the object
  /// @param access mask of `GENERIC_READ` 0x80000000 and `GENERIC_WRITE`
  ///               0x40000000; the latter keeps everybody else out
  /// @return 1 if the file is held. Its content is not looked at.
  int open(const char* name, unsigned int access);
  /// Makes an archive without entries, binds the object to it and holds it with
  /// read and write access.
  /// @param name      path of the archive
  /// @param overwrite non-zero to replace an existing file
  /// @return 1 if the new archive is held; 0 otherwise, and then, if an
  ///         existing file was in the way, object and file are as they were
  int create(const char* name, int overwrite);
  /// Lets go of the file; name, access and password stay.
  /// @return always 1
  int close();
  /// Sets the password for entries read and written from now on.
  /// @param text password, not null; empty for none
  void password(const char* text);
  /// The access mask of the last open() or create().
  unsigned int access() const;
  /// 1 if the file is held and the mask has `GENERIC_READ`, else 0.
  int canRead() const;
  /// 1 if the file is held and the mask has `GENERIC_WRITE`, else 0.
  int canWrite() const;
  /// Path of the archive, valid until it changes; null if there is none.
  const char* fileName() const;
  /// Whether a file begins with the bytes `PK`.
  /// @return 1 or 0; nothing else of the file is looked at
  static int isZip(const char* path);

  /// Names of all entries, folders included, in their order.
  /// @param names gets the names behind what it holds
  /// @return 1 if the list is complete; 0 if not, or if there is no entry
  int enumerate(std::vector<std::string>& names) const;
  /// Names and comments of all entries that are not folders, in their order.
  /// @param entries gets the pairs behind what it holds
  /// @return 1 if the archive could be read
  int content(std::vector<std::pair<std::string, std::string>>& entries) const;
  /// Whether the archive has an entry of that name.
  /// @return 1 or 0
  int exist(const char* name) const;
  /// Whether the archive has no entry.
  /// @return 0 if it has at least one, else 1, also if it cannot be read
  int empty() const;

  /// Extracts entries to files, each at the path made of the prefix and its name.
  /// Missing folders are created and existing files replaced. A name that escapes
  /// the prefix (`..`, a root, a drive) fails, and so does one that passes through
  /// a symbolic link below it. A link that has the name of an entry is replaced.
  /// @param names  names of entries
  /// @param prefix text put directly in front of each name: a folder ends in a
  ///               separator
  /// @return 1 if at least one entry was extracted
  int extract(const std::vector<std::string>& names, const char* prefix) const;
  /// Extracts one entry to a file. Missing folders are created. An existing file
  /// is replaced whole or not at all; a symbolic link is replaced itself.
  /// @param name   name of the entry
  /// @param target path of the file
  /// @return 1 or 0
  int extract(const char* name, const char* target) const;
  /// Extracts one entry to memory.
  /// @param name  name of the entry
  /// @param bytes receives the content. Unchanged if there is no such entry or it
  ///              cannot be opened; empty if its data are damaged.
  /// @return 1 if at least one byte was extracted; 0 for an empty entry
  int extract(const char* name, std::vector<unsigned char>& bytes) const;

  /// Adds an entry with the present time (UTC).
  /// @param bytes     its content
  /// @param name      its name, at most 260 bytes
  /// @param comment   its comment, bytes as they are
  /// @param overwrite non-zero to replace an entry of that name
  /// @return 1 if the entry is in the archive. A failure that replaces nothing
  ///         leaves the archive byte for byte as it was.
  int insert(const std::vector<unsigned char>& bytes, const std::string& name,
             const std::string& comment, int overwrite);
  /// Adds a file with its last write time (local) and attributes.
  /// @param source    path of the file
  /// @param name      name of the entry, at most 260 bytes; null or empty for
  ///                  `source` as given
  /// @param comment   its comment, bytes as they are; null for none
  /// @param overwrite non-zero to replace an entry of that name
  /// @return as for the form with bytes
  int insert(const char* source, const char* name, const char* comment, int overwrite);
  /// Takes an entry out. The other entries keep their bytes and their order.
  /// @param name name of the entry; other entries whose names differ from it in
  ///             letter case only go too
  /// @return 1 if it is gone; 0 otherwise, with the archive untouched. The last
  ///         entry of an archive cannot be taken out.
  int remove(const char* name);

 private:
  ZipArchivePrivate* m_private;
};
