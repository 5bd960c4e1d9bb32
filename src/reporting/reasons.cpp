#include "reporting/reasons.h"

namespace FileSystem {

const char* reasonText(Reason reason) {
  switch (reason) {
    case Reason::None:
      return "it succeeded";
    case Reason::Cancelled:
      return "it was cancelled";
    case Reason::Missing:
      return "it does not exist";
    case Reason::Exists:
      return "a file of that name exists";
    case Reason::SameFile:
      return "the file was already written under another name";
    case Reason::InUse:
      return "another program uses the file";
    case Reason::NoPermission:
      return "the file or its directory is read-only, or there is no permission";
    case Reason::NotAFile:
      return "it is neither a file nor a directory, or a link without a target";
    case Reason::NotAFolder:
      return "something else, such as a link, has the name of a directory";
    case Reason::IsAFolder:
      return "a directory has its name";
    case Reason::ReadFailed:
      return "the file cannot be read to its end, or changes meanwhile";
    case Reason::WriteFailed:
      return "the file cannot be written";
    case Reason::DiskFull:
      return "the disk is full";
    case Reason::OutOfMemory:
      return "there is not enough memory";
    case Reason::TooLarge:
      return "it is too large";
    case Reason::NameTooLong:
      return "its name is too long";
    case Reason::PathTooLong:
      return "the path is too long";
    case Reason::NameEscapes:
      return "its name escapes the directory";
    case Reason::NameTaken:
      return "another file of the same name is among them";
    case Reason::NotAnArchive:
      return "it is not a sound zip archive";
    case Reason::SplitArchive:
      return "it is part of a split archive, which is not supported";
    case Reason::Damaged:
      return "it is damaged";
    case Reason::PasswordMissing:
      return "it is encrypted and needs a password";
    case Reason::PasswordWrong:
      return "the password is wrong or it is damaged";
    case Reason::UnsupportedMethod:
      return "its compression method is not supported";
    case Reason::UnsupportedEncryption:
      return "its encryption is not supported";
    case Reason::Failed:
      break;
  }
  return "the system gave no reason";
}

namespace Detail {

Reason reasonOfError(DWORD error, Reason other) {
  switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
      return Reason::Missing;
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
      return Reason::NoPermission;
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
      return Reason::InUse;
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_OUTOFMEMORY:
      return Reason::OutOfMemory;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
      return Reason::DiskFull;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
      return Reason::Exists;
    case ERROR_FILENAME_EXCED_RANGE:
    case ERROR_BUFFER_OVERFLOW:
      return Reason::PathTooLong;
    case ERROR_REQUEST_ABORTED:
      return Reason::Cancelled;
    case ERROR_DIRECTORY:
      return Reason::NotAFolder;
    default:
      return other;
  }
}

}  // namespace Detail
}  // namespace FileSystem
