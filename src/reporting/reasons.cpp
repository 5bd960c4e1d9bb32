#include "reporting/reasons.h"

#include <utility>

namespace FileSystem {

namespace {

constexpr std::pair<Reason, const char*> kTexts[] = {
    {Reason::None, "it succeeded"},
    {Reason::Cancelled, "it was cancelled"},
    {Reason::Missing, "it does not exist"},
    {Reason::Exists, "a file of that name exists"},
    {Reason::SameFile, "the file was already written under another name"},
    {Reason::InUse, "another program uses the file"},
    {Reason::NoPermission, "the file or its directory is read-only, or there is no permission"},
    {Reason::NotAFile, "it is neither a file nor a directory, or a link without a target"},
    {Reason::NotAFolder, "something else, such as a link, has the name of a directory"},
    {Reason::IsAFolder, "a directory has its name"},
    {Reason::ReadFailed, "the file cannot be read to its end, or changes meanwhile"},
    {Reason::WriteFailed, "the file cannot be written"},
    {Reason::DiskFull, "the disk is full"},
    {Reason::OutOfMemory, "there is not enough memory"},
    {Reason::TooLarge, "it is too large"},
    {Reason::NameTooLong, "its name is too long"},
    {Reason::PathTooLong, "the path is too long"},
    {Reason::NameEscapes, "its name escapes the directory"},
    {Reason::NameTaken, "another file of the same name is among them"},
    {Reason::NotAnArchive, "it is not a sound zip archive"},
    {Reason::SplitArchive, "it is part of a split archive, which is not supported"},
    {Reason::Damaged, "it is damaged"},
    {Reason::PasswordMissing, "it is encrypted and needs a password"},
    {Reason::PasswordWrong, "the password is wrong or it is damaged"},
    {Reason::UnsupportedMethod, "its compression method is not supported"},
    {Reason::UnsupportedEncryption, "its encryption is not supported"},
    {Reason::IsALink, "it is a symbolic link, and none is created here"},
};

}  // namespace

const char* reasonText(Reason reason) {
  for (const auto& [known, text] : kTexts) {
    if (known == reason) return text;
  }
  return "the system gave no reason";
}

namespace Detail {

Reason reasonOfError(DWORD error, Reason other) {
  switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_BAD_NETPATH:
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
    case ERROR_CRC:
      return Reason::ReadFailed;
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
