#pragma once
// The course of a call on a tree of files: what it did with each of them, and its progress.

#include <filesystem/options.h>
#include <filesystem/results.h>

#include <cstdint>
#include <string>

#include "reporting/progress_relay.h"

namespace FileSystem::Detail {

class TreeCall {
 public:
  // For an export that returns a number: counts the files, remembers and reports none of them, and
  // is never cancelled.
  TreeCall();
  // `options` must outlive the object.
  explicit TreeCall(const Options& options);

  // True if items are kept. Otherwise no name or reason is needed.
  bool reports() const { return reports_; }
  // True if there is a callback. Without one no totals are needed.
  bool hasProgress() const { return relay_.isNeeded(); }
  ExistingFiles existing() const { return existing_; }
  bool isCancelled() const { return relay_.isCancelled(); }

  // Sets what the whole call has to do.
  void expect(std::uint64_t files, std::uint64_t bytes) { relay_.expect(files, bytes); }
  // Begins with a file, or with listing a folder, of this path below the start. Returns false if
  // the host cancels the call, as the next one does.
  bool begin(std::string name);
  // Reports that so many bytes from the start of the file are done.
  bool moveTo(std::uint64_t position);
  // Ends with the file. With Reason::SameFile, `other` is the id of the other one.
  void end(Reason reason, std::uint64_t other = 0);
  // Changes the result of a file that ended with Reason::None.
  void fail(std::uint64_t id, Reason reason);
  // Adds a folder that failed.
  void failFolder(std::string name, Reason reason);

  // The number of files that are done.
  std::uint64_t done() const { return done_; }
  // The id of the file that was begun last; the same for all if none is reported.
  std::uint64_t id() const { return report_.items.size() + 1; }

  // Ends the call, and throws what its callback has thrown. `reason` is why it did nothing.
  Report finish(Reason reason = Reason::None);

 private:
  ProgressRelay relay_;
  const bool reports_;
  const ExistingFiles existing_ = ExistingFiles::Replace;
  Report report_;
  std::string name_;            // of the file that was begun last
  std::uint64_t position_ = 0;  // in it
  std::uint64_t done_ = 0;
};

}  // namespace FileSystem::Detail
