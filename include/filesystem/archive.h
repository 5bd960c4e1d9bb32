#pragma once
/// @file
/// Reading zip archives (PKWARE APPNOTE) with records, reasons and progress.
///
/// @code
/// using namespace FileSystem;
/// Archive archive;
/// const Reason reason = archive.open("C:\\data\\orders.zip");
/// if (reason != Reason::None) return show(reasonText(reason));
/// for (const Entry& entry : archive.entries()) addRow(entry.name, entry.size, entry.modified);
/// const Report report = archive.unpack(archive.entries(), "C:\\data\\orders\\");
/// @endcode
///
/// Paths and names are texts in the process code page, paths with `\` or `/`.

#include <filesystem/export.h>
#include <filesystem/options.h>
#include <filesystem/results.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace FileSystem {

/// A date and a local time of day. Archives store them in steps of two seconds.
struct EntryTime {
  std::uint16_t year = 0;    ///< from 1980; 0 if the entry has no valid time
  std::uint16_t month = 0;   ///< 1 to 12
  std::uint16_t day = 0;     ///< 1 to 31
  std::uint16_t hour = 0;    ///< 0 to 23
  std::uint16_t minute = 0;  ///< 0 to 59
  std::uint16_t second = 0;  ///< 0 to 59
};

/// What the central directory of an archive says of an entry. Nothing of it is proved.
struct Entry {
  std::string name;     ///< with the separators that ZipArchive::enumerate returns, but never cut
  std::string comment;  ///< as it is stored, without conversion
  std::uint64_t size = 0;        ///< of the content, in bytes
  std::uint64_t storedSize = 0;  ///< in the archive, in bytes
  /// The last write of the file: in the time zone of this machine if hasUtc, else as it is stored.
  EntryTime modified;
  bool hasUtc = false;               ///< the archive has the time of the last write in UTC
  std::int64_t utcSeconds = 0;       ///< that time, in seconds since 1970
  std::uint32_t utcNanoseconds = 0;  ///< and the rest of it; 0 in most archives
  std::uint32_t crc = 0;             ///< CRC-32 (ISO 3309) of the content; 0 with most AES entries
  std::uint16_t method = 0;          ///< of the compression (APPNOTE 4.4.5), inside an encryption
  Encryption encryption = Encryption::None;  ///< of the content
  bool isFolder = false;                     ///< a folder, which has no content
  bool isLink = false;                       ///< a symbolic link, whose content is its target
  std::uint32_t attributes = 0;              ///< of MS-DOS and Windows, such as 0x01 for read-only
  std::uint32_t mode = 0;                    ///< of Unix, as `st_mode`; 0 if the entry has none
  std::uint64_t position = 0;  ///< of its record; distinguishes entries of equal names
};

/// Returns the usual name of a compression method, such as "deflate", or an empty text.
/// @param method as Entry::method
FILESYSTEM_API const char* methodName(std::uint16_t method);

/// Reports whether this build of the library reads entries of a compression method: stored, deflate
/// and Deflate64 always; bzip2, LZMA, XZ and Zstandard if it was built with their libraries.
/// @param method as Entry::method
FILESYSTEM_API bool canReadMethod(std::uint16_t method);

/// Receives the content of an entry piece by piece, at most 256 KiB each. Returning false cancels.
/// An exception from it ends the call as returning false does, and then leaves the call.
using Sink = std::function<bool(const unsigned char* data, std::size_t size)>;

/// An archive that is open for reading. Its directory is read once, when it is opened.
///
/// While it is open other programs can read the archive; those that use this library, and on
/// Windows all others, cannot change it. If another program changes it in spite of that, the CRC of
/// each content shows it: nothing is reported as read that is not what the directory says.
///
/// An object belongs to one thread at a time. Entries belong to the object that returned them; one
/// of another archive fails with Reason::Missing or reads another entry, and nothing worse.
class FILESYSTEM_API Archive {
 public:
  Archive();                                     ///< Has no archive.
  Archive(Archive&& other) noexcept;             ///< Takes the archive of `other`.
  Archive& operator=(Archive&& other) noexcept;  ///< Closes the archive, and takes that of `other`.
  ~Archive();                                    ///< Closes the archive.

  /// Opens an archive, after closing the one before.
  /// @param path path of the archive, not null
  /// @return Reason::None if it is open. Missing, NoPermission, InUse, IsAFolder, NotAnArchive and
  ///         SplitArchive are usual failures; the object then has no archive.
  Reason open(const char* path);
  /// Closes the archive. Without one it does nothing.
  void close();
  /// Reports whether an archive is open. Without one there are no entries, and reading fails with
  /// Reason::Missing.
  bool isOpen() const;

  /// Returns the records of all entries, in the order of the central directory. They are read by
  /// the first call, and are valid until the archive is closed.
  const std::vector<Entry>& entries() const;
  /// Returns the comment of the archive, as it is stored.
  std::string comment() const;
  /// Returns the number of bytes of the file that belong to no entry, between the last entry and the
  /// directory and after it. An append that was interrupted leaves some, and loses nothing.
  std::uint64_t unusedBytes() const;
  /// Reports whether there is an entry of exactly this name.
  /// @param name name of the entry, not null
  bool contains(const char* name) const;
  /// Finds an entry by its exact name. Of entries with equal names it is the last one.
  /// @param name name of the entry, not null
  /// @return the record; nothing if there is no such entry
  std::optional<Entry> find(const char* name) const;

  /// Reads the content of an entry piece by piece. What was passed on is proved to be the whole
  /// content only when the call returns Reason::None.
  /// @param entry   entry of this archive
  /// @param sink    receives the pieces
  /// @param options the password. The progress is reported too.
  Reason read(const Entry& entry, const Sink& sink, const Options& options = Options()) const;
  /// Reads the content of an entry into memory, which grows as bytes arrive.
  /// @param entry   entry of this archive
  /// @param bytes   set to the content, or to no bytes on failure; Reason::TooLarge if it has more
  ///                than 4 GiB - 1
  /// @param options as for read()
  Reason readAll(const Entry& entry, std::vector<unsigned char>& bytes,
                 const Options& options = Options()) const;
  /// Writes the content of an entry to a file of any name, as unpack() does. Missing folders are
  /// created. On failure an existing file is unchanged, and a new one deleted.
  /// @param entry   entry of this archive
  /// @param file    path of the file, not null
  /// @param options the password, what is done with an existing file, and what is kept
  Reason extract(const Entry& entry, const char* file, const Options& options = Options()) const;
  /// Writes entries to a folder under their own names, and continues after one that fails. Missing
  /// folders are created. A name that escapes the folder, and one that passes through a link in it,
  /// fails. Of names that the file system takes for one, only the first is written. Each file is the
  /// old one or complete.
  ///
  /// Files and new folders get the times of their entries, and on Linux the permissions: exactly
  /// those, whatever the umask is, without set-id bits (Options::setSetId). Entries without
  /// permissions get what the umask leaves of 0666 and 0777. At no instant has a file more
  /// permissions than its entry. Existing folders stay as they are. Links are created last and with
  /// any target; no file is written through them. Sockets and devices fail with Reason::NotAFile; a
  /// pipe becomes a file of what was read from it. Links fail with Reason::IsALink on Windows, which
  /// has attributes in place of permissions.
  ///
  /// Folders get their times and permissions after all files, also when the call is cancelled.
  /// @param entries entries of this archive
  /// @param folder  the target, with or without trailing separator, not null
  /// @param options password, existing files, progress, what is kept
  /// @return an item for each entry, by its name. Report::reason is Reason::Cancelled, or why the
  ///         folder cannot be used.
  Report unpack(const std::vector<Entry>& entries, const char* folder,
                const Options& options = Options()) const;
  /// Reads the contents of entries, and compares their lengths and checksums with the directory.
  /// @param entries entries of this archive
  /// @param options password, progress
  /// @return an item for each entry, by its name
  Report test(const std::vector<Entry>& entries, const Options& options = Options()) const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace FileSystem
