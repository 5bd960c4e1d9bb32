// ArchiveChange.

#include <filesystem/archive_change.h>

#include <utility>

#include "path/zero_terminated.h"
#include "reporting/progress_relay.h"
#include "zip/change_application.h"

namespace FileSystem {

struct ArchiveChange::State {
  zip::Changes changes;

  void insert(decltype(zip::Insertion::content) content, const std::string& name,
              const std::string& comment) {
    changes.insertions.push_back({std::move(content), std::string(Detail::upToZero(name)),
                                  std::string(Detail::upToZero(comment))});
  }
};

ArchiveChange::ArchiveChange() : state_(std::make_unique<State>()) {}
ArchiveChange::ArchiveChange(ArchiveChange&& other) noexcept = default;
ArchiveChange& ArchiveChange::operator=(ArchiveChange&& other) noexcept = default;
ArchiveChange::~ArchiveChange() = default;

void ArchiveChange::remove(const std::string& name) {
  state_->changes.removals.emplace_back(Detail::upToZero(name));
}

void ArchiveChange::insertFile(const std::string& file, const std::string& name,
                               const std::string& comment) {
  state_->insert(std::string(Detail::upToZero(file)), name, comment);
}

void ArchiveChange::insertFolder(const std::string& folder, const std::string& name) {
  std::string entry(Detail::upToZero(name));
  const bool hasEnd = !entry.empty() && (entry.back() == '\\' || entry.back() == '/');
  const bool hasSlashes = entry.find('/') != std::string::npos && entry.find('\\') == entry.npos;
  if (!hasEnd && !entry.empty()) entry += hasSlashes ? '/' : '\\';
  state_->insert(zip::FolderSource{std::string(Detail::upToZero(folder))}, entry, {});
}

void ArchiveChange::insertLink(const std::string& link, const std::string& name) {
  state_->insert(zip::LinkSource{std::string(Detail::upToZero(link))}, name, {});
}

void ArchiveChange::insertBytes(std::vector<unsigned char> bytes, const std::string& name,
                                const std::string& comment) {
  state_->insert(std::move(bytes), name, comment);
}

void ArchiveChange::insertFrom(ContentSource source, const std::string& name,
                               const std::string& comment) {
  state_->insert(std::move(source), name, comment);
}

Report ArchiveChange::apply(const char* archive, const Options& options) {
  const zip::Changes changes = std::exchange(state_->changes, {});
  Detail::ProgressRelay progress(options.progress());
  Report report;
  zip::EntrySettings settings;
  report.reason = zip::readSettings(options, settings);
  if (report.reason == Reason::None) {
    report = zip::ChangeApplication(changes, archive, options, settings, progress).run();
  }
  progress.rethrow();
  return report;
}

}  // namespace FileSystem
