#include "zip/prepared_entries.h"

#include <algorithm>
#include <utility>

#include "reporting/progress_relay.h"

namespace zip {

using FileSystem::Reason;

namespace {

// Tasks begin no further entry when all have so many bytes of content for each worker, whatever sizes
// the files were said to have. What they have begun adds as much once more at most.
constexpr std::uint64_t kWindow = ArchiveWriter::kLargestPrepared;

// What an entry takes beside its content, counted high, so that a window has a limited number of
// them.
constexpr std::uint64_t kEntryCost = 4 << 10;

}  // namespace

struct PreparedEntries::Worker {
  explicit Worker(const EntrySettings& settings) : adder(writer, settings, progress) {}

  FileSystem::Detail::ProgressRelay progress;
  ArchiveWriter writer;
  EntryAdder adder;
};

PreparedEntries::PreparedEntries(std::size_t count, const EntrySettings& settings,
                                 HostWorkers& workers, Prepare prepare)
    : count_(count), settings_(settings), workers_(workers), prepare_(std::move(prepare)) {}

PreparedEntries::~PreparedEntries() = default;

std::optional<PreparedEntry> PreparedEntries::takeFromWindow(std::size_t index) {
  if (index >= end_) prepareFrom(index);
  return index < end_ ? std::exchange(window_[index - begin_], std::nullopt) : std::nullopt;
}

void PreparedEntries::prepareFrom(std::size_t index) {
  const std::size_t most = static_cast<std::size_t>(workers_.count() * kWindow / kEntryCost);
  window_.clear();
  window_.resize(std::min(count_ - index, most));
  begin_ = end_ = index;
  next_ = 0;
  bytes_ = 0;
  const std::size_t tasks = std::min(workers_.count(), window_.size());
  while (own_.size() < tasks) own_.push_back(std::make_unique<Worker>(settings_));
  // A single entry is as fast without a task.
  if (tasks > 1 && workers_.run(tasks, [this](std::size_t task) { work(*own_[task]); })) {
    end_ += std::min<std::size_t>(next_, window_.size());
  }
}

// Each task takes the next entry when it has prepared one, so that all end at about the same time.
void PreparedEntries::work(Worker& worker) {
  while (bytes_ < workers_.count() * kWindow) {
    const std::size_t at = next_++;
    if (at >= window_.size()) return;
    bytes_ += kEntryCost;
    if (prepare_(begin_ + at, worker.writer, worker.adder) != Reason::None) continue;
    window_[at] = worker.writer.takePrepared();
    if (window_[at]) bytes_ += window_[at]->contentSize();
  }
}

}  // namespace zip
