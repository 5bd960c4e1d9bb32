#pragma once
/// @file
/// Results with reasons: why a call failed, and what it did with each file or entry.
///
/// @code
/// using namespace FileSystem;
/// const Report report = packFolder("C:\\photos", "C:\\photos.zip");
/// for (const ItemResult& item : report.items) {
///   if (item.reason != Reason::None) show(item.name, reasonText(item.reason));
/// }
/// @endcode

#include <filesystem/export.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace FileSystem {

/// Why a call, or its work on one file or entry, failed. Later versions may add reasons, so a host
/// treats one that it does not know as Reason::Failed.
enum class Reason : std::int32_t {
  None = 0,           ///< it succeeded
  Failed,             ///< for a reason that the system does not name
  Cancelled,          ///< a callback ended the call
  Missing,            ///< the file, the folder or the entry does not exist
  Exists,             ///< the name is in use, and what has it was to be kept
  SameFile,           ///< the call has written the file under another name
  InUse,              ///< another program uses the file
  NoPermission,       ///< the user has no permission, or the file is read-only
  NotAFile,           ///< neither a file nor a folder, or a link without a target
  NotAFolder,         ///< something else has the name of a folder
  IsAFolder,          ///< a folder has the name of a file
  ReadFailed,         ///< the file cannot be read to its end, or changes while it is read
  WriteFailed,        ///< the file cannot be written
  DiskFull,           ///< the disk, or the user's share of it, is full
  OutOfMemory,        ///< there is not enough memory
  TooLarge,           ///< the content or the comment has more bytes than the call can take
  NameTooLong,        ///< the name of the entry has more bytes than an archive takes
  PathTooLong,        ///< the path has more bytes than the system takes
  NameEscapes,        ///< the name of the entry escapes the target folder
  NameTaken,          ///< another file or entry of the call has the same name
  NotAnArchive,       ///< the file is no zip archive, or its directory is damaged
  SplitArchive,       ///< the file is a part of an archive of several files, which is not supported
  Damaged,            ///< the data of the entry are damaged
  PasswordMissing,    ///< the entry is encrypted, and there is no password
  PasswordWrong,      ///< the password is wrong, or the encrypted data are damaged
  UnsupportedMethod,  ///< the compression method, or the window that it needs, is not supported
  UnsupportedEncryption,  ///< the encryption is not supported
  IsALink,  ///< the entry is a symbolic link, which the call or the system does not create
};

/// Returns the reason as part of a sentence in English, such as "the disk is full". Of a value that
/// is no reason it is the text of Reason::Failed.
/// @param reason the reason
/// @return a zero-terminated text that is never freed
FILESYSTEM_API const char* reasonText(Reason reason);

/// What a call did with one file or entry.
struct ItemResult {
  std::string name;              ///< its path or the name of the entry, as the call says
  Reason reason = Reason::None;  ///< why it failed; Reason::None if it is done
  std::string other;             ///< with Reason::SameFile and NameTaken, the name of the other one
  bool isFolder = false;         ///< it is a folder
  bool isLink = false;           ///< listTree: it is a symbolic link, which was not followed
};

/// What a call on many files or entries did.
struct Report {
  /// Why the call ended before its end, or did nothing. Reason::None if it came to its end, whatever
  /// its items say.
  Reason reason = Reason::None;
  /// The files and entries that the call came to, in that order.
  std::vector<ItemResult> items;

  /// True if the call came to its end and all items are done.
  explicit operator bool() const {
    if (reason != Reason::None) return false;
    for (const ItemResult& item : items) {
      if (item.reason != Reason::None) return false;
    }
    return true;
  }
};

}  // namespace FileSystem
