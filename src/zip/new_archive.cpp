#include "zip/new_archive.h"

namespace zip {

NewArchive::~NewArchive() {
  if (writer_ && !version_) writer_->abandon();
}

bool NewArchive::begin() {
  if (!version_->canReplace() && beginInPlace()) return true;
  writer_.emplace(version_->create().c_str(), ArchiveWriter::Mode::Create);
  return static_cast<bool>(*writer_);
}

// False, with the file locked as before, if it is no archive.
bool NewArchive::beginInPlace() {
  version_.reset();
  writer_.emplace(path_.c_str(), ArchiveWriter::Mode::Append);
  if (*writer_) {
    writer_->drop([](const std::string&) { return true; });
    return true;
  }
  writer_.reset();
  version_.emplace(path_);
  return false;
}

bool NewArchive::complete() {
  // The old comment is not that of the new archive.
  return writer_->commit("") == ArchiveWriter::Commit::Complete &&
         (!version_ || version_->putInPlace());
}

}  // namespace zip
