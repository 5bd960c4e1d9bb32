#pragma once
/// @file
/// Reading and writing of zip archives (PKWARE APPNOTE).
///
/// @code
/// ZipArchive archive;
/// if (archive.create("C:\\data\\notes.zip", 1) != 0) {
///   archive.insert("C:\\data\\todo.txt", "todo.txt", nullptr, 0);
/// }
/// std::vector<std::string> names;
/// if (archive.open("C:\\data\\old.zip", FileSystem::kAccessRead) != 0) archive.enumerate(names);
/// archive.extract(names, "C:\\data\\old\\");
/// @endcode

#include <filesystem/access.h>
#include <filesystem/export.h>

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

class ZipArchivePrivate;

/// One zip archive on disk.
///
/// Between calls the object holds the file open: with read access other processes can read it but
/// not write to it, with write access they cannot open it at all. Each call releases the file while
/// it works. If another process takes it meanwhile, the object does not hold it afterwards, and
/// canRead() and canWrite() return 0 until the next open().
///
/// Results of type `int` are truth values; 0 means failure or no. A call that needs access that the
/// object does not have fails and changes nothing. Entry names are texts in the process code page,
/// of at most 260 bytes in the archive. Their separators are kept; letter case counts. Of entries
/// with equal names the last one is found.
///
/// A call that is interrupted, by a full disk or by the end of the process, leaves the archive with
/// all entries that it had. On Linux that holds for a power failure too, and a change is on the
/// disk when its call returns.
///
/// Archives of several volumes are not supported. Entries have any size; one of more than 4 GiB - 1
/// bytes can be extracted to a file, but not to memory. Entries are
/// encrypted with the traditional method, which stops no attacker, unless Encryption::Aes256 is
/// chosen. The names of entries are never encrypted.
///
/// A copy shares the state of its original: an open() or close() through one object is seen through
/// the other. An object and its copies belong to one thread at a time.
class FILESYSTEM_API ZipArchive {
 public:
  /// The encryption of new entries that get a password. Entries of both kinds are read.
  enum class Encryption {
    Traditional,  ///< that of PKWARE (APPNOTE 6.1), which every program reads; it is weak
    Aes256,       ///< WinZip's AE-2 with AES-256, if the library was built with AES
  };

  /// Creates an object that is bound to no archive.
  ZipArchive();
  /// Shares the state of `other`.
  ZipArchive(const ZipArchive& other);
  /// Shares the state of `other` and drops the former state, as the destructor does.
  ZipArchive& operator=(const ZipArchive& other);
  /// Releases the archive if no other object shares the state.
  virtual ~ZipArchive();

  /// Binds the object to an existing file and opens that. The file before is released.
  /// @param name   path of the archive; null unbinds the object
  /// @param access FileSystem::kAccessRead to read; FileSystem::kAccessReadWrite to insert and
  ///               remove too
  /// @return 1 if the file is held, whatever its content; 0 if it is missing, in use or not
  ///         accessible. The object is bound to the name in either case.
  int open(const char* name, unsigned int access);
  /// Creates an archive without entries, binds the object to it, and holds it with read and write
  /// access.
  /// @param name      path of the archive, not null
  /// @param overwrite non-zero to replace an existing file
  /// @return 1 if the new archive is held. 0 if `overwrite` is 0 and the file exists; nothing
  ///         changes then. 0 if the file cannot be created; the object is then bound to no archive.
  int create(const char* name, int overwrite);
  /// Releases the file. Name, access mask and password remain.
  /// @return 1
  int close();
  /// Sets the password for the entries that are read and written from now on. New entries get the
  /// traditional encryption.
  /// @param text password, not null; empty for none
  void password(const char* text);
  /// Sets the password, and the encryption of new entries.
  /// @param text       password, not null; empty for none
  /// @param encryption encryption of the entries that are written from now on
  /// @return 1; 0 if the library was built without the encryption, and nothing changes then
  int setEncryption(const char* text, Encryption encryption);
  /// Returns the access mask of the last open() or create(), FileSystem::kAccessReadWrite before.
  unsigned int access() const;
  /// Returns 1 if the file is held and the mask has FileSystem::kAccessRead, else 0.
  int canRead() const;
  /// Returns 1 if the file is held and the mask has FileSystem::kAccessWrite, else 0.
  int canWrite() const;
  /// Returns the path of the archive, also while it is not held; null if the object is bound to
  /// none. The pointer is valid until the name changes.
  const char* fileName() const;
  /// Returns 1 if a file begins with the bytes `PK`, else 0. Nothing else of it is checked.
  /// @param path path of the file, not null
  static int isZip(const char* path);

  /// Lists the names of all entries, those of directories included, in the order of the archive.
  /// @param names the names are appended to it; one of more than 260 bytes is cut
  /// @return 1 if the list is complete; 0 if the archive has no entry or cannot be read
  int enumerate(std::vector<std::string>& names) const;
  /// Lists the names and comments of all entries but directories, in the order of the archive.
  /// @param entries pairs of name and comment are appended to it
  /// @return 1 if the archive can be read, else 0
  int content(std::vector<std::pair<std::string, std::string>>& entries) const;
  /// Returns 1 if the archive has an entry of that name, else 0.
  /// @param name name of the entry, not null
  int exist(const char* name) const;
  /// Returns 0 if the archive has an entry; 1 if it has none or cannot be read.
  int empty() const;

  /// Extracts entries to files, each to the path made of the prefix and its name, as the form below
  /// does. A name that escapes the prefix (`..`, a root, a drive) fails, and so does one that
  /// passes through a symbolic link below the prefix. A name that leads to a file which this call
  /// has extracted under another name fails, too: `a` after `A` where letter case does not count,
  /// or `b\c` after `b/c`. Entries that fail do not stop the others.
  /// @param names  names of entries, each up to its first zero byte
  /// @param prefix text to which each name is appended, not null; that of a directory ends in a
  ///               separator
  /// @return 1 if at least one entry was extracted, else 0
  int extract(const std::vector<std::string>& names, const char* prefix) const;
  /// Extracts one entry to a file. Missing directories are created. An existing file is replaced as
  /// a whole or not at all, by a new file with its owner, permissions, access control list and, on
  /// Linux, user attributes. Its other hard links keep the old content. If a new file cannot have
  /// them, it is overwritten in place. A symbolic link is replaced itself.
  ///
  /// Fails if the entry is missing, damaged or encrypted with another password, or if the file
  /// cannot be written, is read-only or in use, or is a directory. Directories that were created
  /// remain.
  /// @param name   name of the entry, not null
  /// @param target path of the file, not null
  /// @return 1 if the file has the content, else 0
  int extract(const char* name, const char* target) const;
  /// Extracts one entry to memory.
  /// @param name  name of the entry, not null
  /// @param bytes receives the content. Unchanged if the entry is missing or cannot be opened, as
  ///              with a wrong password; empty if its data are damaged.
  /// @return 1 if at least one byte was extracted, else 0; an empty entry returns 0
  int extract(const char* name, std::vector<unsigned char>& bytes) const;

  /// Inserts an entry with the present time (UTC), deflated where that saves space.
  ///
  /// Fails, and leaves the archive byte for byte unchanged, if the name exists and `overwrite` is
  /// 0, if the name is empty or too long, if the file is no zip archive, or if the archive's
  /// comment contains an end-of-central-directory record. A file without bytes becomes an archive.
  ///
  /// Replacing an entry rewrites the archive, with the effects that remove() has.
  /// @param bytes     its content
  /// @param name      its name, up to the first zero byte
  /// @param comment   its comment, up to the first zero byte; at most 65,535 bytes, not converted
  /// @param overwrite non-zero to replace an entry of that name, and with it all whose names differ
  ///                  from it only in letter case. The new entry becomes the last one.
  /// @return 1 if the entry is in the archive, else 0
  int insert(const std::vector<unsigned char>& bytes, const std::string& name,
             const std::string& comment, int overwrite);
  /// Inserts a file with its last write time (local) and attributes, as the form above does.
  ///
  /// If the source cannot be opened and `overwrite` is non-zero, an existing entry of that name is
  /// removed all the same. If the source cannot be read to its end, nothing changes.
  /// @param source    path of the file, not null
  /// @param name      name of the entry; null or empty for `source` as given
  /// @param comment   its comment, as above; null for none
  /// @param overwrite non-zero to replace an entry of that name, as above
  /// @return 1 if the entry is in the archive, else 0
  int insert(const char* source, const char* name, const char* comment, int overwrite);
  /// Removes an entry. All others keep their order, stored data, times, attributes, extra fields
  /// and comments; no password is needed.
  ///
  /// The archive is rewritten in the system's temporary folder and then replaced by a new file with
  /// its owner, permissions and access control list. Bytes before the first entry, as of a
  /// self-extracting program, are lost. If a new file cannot have its owner, its group and its
  /// access control list, or if it has several hard links, the file remains: the entry is taken out
  /// of its directory, and its bytes remain in the file.
  /// @param name name of the entry, not null. Other entries whose names differ only in letter case
  ///             are removed too.
  /// @return 1 if the entry was removed. 0, with the archive unchanged, if there is no such entry,
  ///         if no other entry would remain, if another one cannot be copied, or if the temporary
  ///         folder or the archive cannot be written.
  int remove(const char* name);

 private:
  ZipArchivePrivate* m_private;
};
