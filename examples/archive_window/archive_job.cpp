#include "archive_job.h"

#include <filesystem/archive.h>
#include <filesystem/archive_change.h>

#include <utility>

ArchiveJob::ArchiveJob(Kind kind, std::string folder, std::string archive,
                       std::function<void()> changed)
    : changed_(std::move(changed)),
      thread_([this, kind, folder = std::move(folder), archive = std::move(archive)] {
        run(kind, folder, archive);
        isFinished_ = true;
        changed_();
      }) {}

ArchiveJob::~ArchiveJob() {
  cancel();
  thread_.join();
}

ArchiveJob::State ArchiveJob::state() const {
  const std::lock_guard lock(mutex_);
  return state_;
}

void ArchiveJob::run(Kind kind, const std::string& folder, const std::string& archive) {
  FileSystem::Options options;
  // It runs on this thread, so that the call waits for it: it only takes note.
  options.setProgress([this](const FileSystem::Progress& progress) {
    {
      const std::lock_guard lock(mutex_);
      state_.name = progress.name;
      state_.bytesDone = progress.bytesDone;
      state_.bytesExpected = progress.bytesExpected;
    }
    changed_();
    return !isCancelled_;
  });
  if (kind == Kind::Pack) {
    report_ = FileSystem::packFolder(folder.c_str(), archive.c_str(), options);
    return;
  }
  FileSystem::Archive reader;
  report_.reason = reader.open(archive.c_str());
  if (report_.reason == FileSystem::Reason::None) {
    report_ = reader.unpack(reader.entries(), folder.c_str(), options);
  }
}
