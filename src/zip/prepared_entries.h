#pragma once
// Preparing entries ahead of the writer, several at the same time, if the host lends threads.
//
// A task reads a small file, and compresses and encrypts it in memory, with the functions that write
// it to an archive without workers. So the entry has the same bytes. The calling thread runs tasks
// for the next entries, then appends these in their order and calls the host's callbacks, and so on:
//
//   calling thread   run | append a b c d e | run     | append f g h
//   worker 0         a c |                  | f f f f |
//   worker 1         b d e                  | g h     |
//
// What a task cannot prepare, the calling thread writes when its turn comes: a large file, whose
// parts the engine deflates in tasks (codec/part_deflater.h), and one that fails, for the reason that
// it has then. So tasks report nothing.

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "zip/archive_writer.h"
#include "zip/entry_adder.h"
#include "zip/host_workers.h"

namespace zip {

class PreparedEntries {
 public:
  // Writes an entry, in any thread, to a writer and an adder of that thread. Anything but Reason::None
  // leaves the entry to the calling thread.
  using Prepare = std::function<FileSystem::Reason(std::size_t index, ArchiveWriter&, EntryAdder&)>;

  // `count` is the number of all entries.
  PreparedEntries(std::size_t count, const EntrySettings& settings, HostWorkers& workers,
                  Prepare prepare);
  ~PreparedEntries();

  // Returns the entry if it was prepared. Called once for each, in their order. If the host has
  // cancelled the call meanwhile, there is none.
  std::optional<PreparedEntry> take(std::size_t index) {
    if (workers_.count() == 1) return std::nullopt;
    return takeFromWindow(index);
  }

 private:
  struct Worker;

  std::optional<PreparedEntry> takeFromWindow(std::size_t index);
  void prepareFrom(std::size_t index);
  void work(Worker& worker);

  const std::size_t count_;
  const EntrySettings settings_;
  HostWorkers& workers_;
  const Prepare prepare_;
  std::vector<std::unique_ptr<Worker>> own_;  // what each worker uses
  std::size_t begin_ = 0;                     // of the window: the entries that tasks have tried
  std::size_t end_ = 0;
  std::vector<std::optional<PreparedEntry>> window_;
  std::atomic<std::size_t> next_ = 0;     // in the window
  std::atomic<std::uint64_t> bytes_ = 0;  // of content in it
};

}  // namespace zip
