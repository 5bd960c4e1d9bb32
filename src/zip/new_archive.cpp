#include "zip/new_archive.h"

#include "files/attributes.h"
#include "reporting/reasons.h"
#include "zip/insertion.h"

namespace zip {

using FileSystem::Reason;

NewArchive::NewArchive(const std::string& path, Existing existing)
    : path_(path), existing_(existing), version_(std::in_place, path) {
  const DWORD error = GetLastError();
  if (!*version_) {
    reason_ = reasonForArchive(path.c_str(), error);
  } else if (existing == Existing::Refuse && !isEmptyFile(path) &&
             GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES) {
    // It is locked, so that it stays what it is now.
    version_.reset();
    reason_ = Reason::Exists;
  }
}

NewArchive::~NewArchive() {
  if (writer_ && !version_) writer_->abandon();
}

bool NewArchive::begin() {
  if (!version_->canReplace() && beginInPlace()) return true;
  const std::string path = version_->create();
  if (path.empty()) return failWithError();
  writer_.emplace(path.c_str(), ArchiveWriter::Mode::Create);
  if (!*writer_) {
    reason_ = writer_->reason();
    return false;
  }
  if (version_->isInPlace()) writer_->makeDurable();
  return true;
}

// False, with the file locked as before, if it is no archive.
bool NewArchive::beginInPlace() {
  version_.reset();
  writer_.emplace(path_.c_str(), ArchiveWriter::Mode::Append);
  if (*writer_) {
    // Another process may have written to a file without bytes before it was locked again.
    if (existing_ == Existing::Replace) writer_->drop([](const std::string&) { return true; });
    return true;
  }
  writer_.reset();
  version_.emplace(path_);
  return false;
}

bool NewArchive::complete() {
  // The old comment is not that of the new archive.
  if (!writer_->commit("")) {
    reason_ = writer_->reason();
    return false;
  }
  return !version_ || version_->putInPlace() || failWithError();
}

bool NewArchive::failWithError() {
  reason_ = FileSystem::Detail::reasonOfError(GetLastError(), Reason::WriteFailed);
  return false;
}

}  // namespace zip
