// ReplaceFileA would keep the rights and the attributes by itself. But it gives the old file
// another name first, and a process that is killed then leaves no file at the path. A rename that
// replaces is one step.

#include "platform/windows/replacement_file.h"

#include <cstdio>

#include "platform/abandoned_files.h"

namespace platform {
namespace {

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;

std::string folderOf(const std::string& path) {
  return path.substr(0, path.find_last_of("\\/:") + 1);
}

// Creates the file with exactly these rights. Without the protection those of the directory would
// be added.
FileHandle createWithRights(const char* name, DWORD attributes, PSECURITY_DESCRIPTOR rights) {
  SECURITY_DESCRIPTOR descriptor;
  BOOL present = FALSE;
  BOOL defaulted = FALSE;
  PACL list = nullptr;
  if (InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION) == FALSE ||
      GetSecurityDescriptorDacl(rights, &present, &list, &defaulted) == FALSE ||
      SetSecurityDescriptorDacl(&descriptor, present, list, FALSE) == FALSE ||
      SetSecurityDescriptorControl(&descriptor, SE_DACL_PROTECTED, SE_DACL_PROTECTED) == FALSE) {
    return {};
  }
  SECURITY_ATTRIBUTES security{
      .nLength = sizeof security, .lpSecurityDescriptor = &descriptor, .bInheritHandle = FALSE};
  return FileHandle(
      CreateFileA(name, kReadWrite | WRITE_DAC, 0, &security, CREATE_NEW, attributes, nullptr));
}

bool isTaken(DWORD error) { return error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS; }

}  // namespace

OriginalFile::OriginalFile(HANDLE file) {
  if (GetFileInformationByHandle(file, &information_) == FALSE) return;
  DWORD size = 0;
  if (GetKernelObjectSecurity(file, DACL_SECURITY_INFORMATION, nullptr, 0, &size) == FALSE &&
      GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
    valid_ = GetLastError() == ERROR_NOT_SUPPORTED || GetLastError() == ERROR_INVALID_FUNCTION;
    return;
  }
  rights_.resize(size);
  valid_ = GetKernelObjectSecurity(file, DACL_SECURITY_INFORMATION, rights(), size, &size) != 0;
}

bool OriginalFile::isUnchanged(HANDLE file) const {
  BY_HANDLE_FILE_INFORMATION now;
  return GetFileInformationByHandle(file, &now) != FALSE &&
         now.dwVolumeSerialNumber == information_.dwVolumeSerialNumber &&
         now.nFileIndexHigh == information_.nFileIndexHigh &&
         now.nFileIndexLow == information_.nFileIndexLow &&
         now.nFileSizeHigh == information_.nFileSizeHigh &&
         now.nFileSizeLow == information_.nFileSizeLow &&
         CompareFileTime(&now.ftLastWriteTime, &information_.ftLastWriteTime) == 0;
}

ReplacementFile::ReplacementFile(const std::string& path, const OriginalFile* original)
    : path_(path) {
  final_.FileAttributes = FILE_ATTRIBUTE_ARCHIVE;
  if (original != nullptr) {
    constexpr DWORD kKept =
        FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
    const BY_HANDLE_FILE_INFORMATION& old = original->information();
    final_.FileAttributes |= old.dwFileAttributes & kKept;
    final_.CreationTime.LowPart = old.ftCreationTime.dwLowDateTime;
    final_.CreationTime.HighPart = static_cast<LONG>(old.ftCreationTime.dwHighDateTime);
  }
  if (create(folderOf(path), original)) deleteAbandonedTemporaryFiles(name_);
}

bool ReplacementFile::create(const std::string& folder, const OriginalFile* original) {
  constexpr unsigned kNumbers = 0xFFFF;
  DWORD attributes = FILE_ATTRIBUTE_HIDDEN;
  if (original != nullptr) {
    attributes |= original->information().dwFileAttributes & FILE_ATTRIBUTE_ENCRYPTED;
  }
  const PSECURITY_DESCRIPTOR rights =
      original != nullptr && original->hasRights() ? original->rights() : nullptr;
  const unsigned first = GetTickCount() + GetCurrentProcessId();
  for (unsigned attempt = 0; attempt < kNumbers; ++attempt) {
    char name[sizeof kTemporaryPrefix + sizeof "FFFF.TMP"];
    std::snprintf(name, sizeof name, "%s%X.TMP", kTemporaryPrefix,
                  (first + attempt) % kNumbers + 1);
    name_ = folder + name;
    file_ = rights != nullptr ? createWithRights(name_.c_str(), attributes, rights)
                              : FileHandle(CreateFileA(name_.c_str(), kReadWrite, 0, nullptr,
                                                       CREATE_NEW, attributes, nullptr));
    if (file_ || GetLastError() != ERROR_FILE_EXISTS) break;
  }
  // The rights include which of them come from the directory.
  if (file_ &&
      (original == nullptr || SetKernelObjectSecurity(file_.get(), DACL_SECURITY_INFORMATION,
                                                      original->rights()) != FALSE)) {
    return true;
  }
  const DWORD error = GetLastError();
  if (file_) {
    file_.reset();
    DeleteFileA(name_.c_str());
  }
  name_.clear();
  SetLastError(error);
  return false;
}

ReplacementFile::~ReplacementFile() {
  if (name_.empty()) return;
  const DWORD error = GetLastError();
  file_.reset();
  DeleteFileA(name_.c_str());
  SetLastError(error);
}

void ReplacementFile::setMetadata(const NewMetadata& metadata) {
  final_.FileAttributes |= metadata.attributes;
  if (!metadata.lastWrite) return;
  final_.LastWriteTime.LowPart = metadata.lastWrite->dwLowDateTime;
  final_.LastWriteTime.HighPart = static_cast<LONG>(metadata.lastWrite->dwHighDateTime);
}

bool ReplacementFile::close() { return CloseHandle(file_.release()) != FALSE; }

bool ReplacementFile::setAttributes() {
  return SetFileInformationByHandle(file_.get(), FileBasicInfo, &final_, sizeof final_) != FALSE;
}

bool ReplacementFile::complete() {
  if (!file_) {
    file_.reset(CreateFileA(name_.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, nullptr));
  }
  return file_ && setAttributes() && FlushFileBuffers(file_.get()) != FALSE && close();
}

bool ReplacementFile::putInPlace(bool replaces) {
  const DWORD flags = MOVEFILE_WRITE_THROUGH | (replaces ? MOVEFILE_REPLACE_EXISTING : 0);
  bool done = MoveFileExA(name_.c_str(), path_.c_str(), flags) != FALSE;
  const DWORD error = GetLastError();
  // A server may have deleted the old file before it refused the new one.
  const bool isLost =
      !done && replaces && GetFileAttributesA(path_.c_str()) == INVALID_FILE_ATTRIBUTES;
  if (isLost) done = MoveFileExA(name_.c_str(), path_.c_str(), flags) != FALSE;
  if (isLost && !done) giveLastingName();
  if (done || isLost) keep();
  SetLastError(error);
  return done;
}

void ReplacementFile::giveLastingName() {
  constexpr int kMostNumbers = 100;
  const std::string name = path_ + ".new";
  bool isNamed = renameToFree(name);
  for (int number = 2; !isNamed && isTaken(GetLastError()) && number <= kMostNumbers; ++number) {
    isNamed = renameToFree(name + std::to_string(number));
  }
  // The path may be too long.
  if (!isNamed) renameToFree(name_ + ".new");
}

bool ReplacementFile::renameToFree(const std::string& name) {
  if (MoveFileExA(name_.c_str(), name.c_str(), MOVEFILE_WRITE_THROUGH) == FALSE) return false;
  name_ = name;
  return true;
}

std::string pathWithoutLink(const std::string& path, HANDLE file) {
  const DWORD attributes = GetFileAttributesA(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
    return path;
  }
  const DWORD size = GetFinalPathNameByHandleA(file, nullptr, 0, FILE_NAME_NORMALIZED);
  std::string result(size, '\0');
  result.resize(GetFinalPathNameByHandleA(file, result.data(), size, FILE_NAME_NORMALIZED));
  return result.empty() ? path : result;
}

bool isRefusal(DWORD error) {
  switch (error) {
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_USER_MAPPED_FILE:
    case ERROR_WRITE_PROTECT:
    case ERROR_FILENAME_EXCED_RANGE:
    case ERROR_PATH_NOT_FOUND:  // the temporary name makes the path too long
      return true;
    default:
      return false;
  }
}

}  // namespace platform
