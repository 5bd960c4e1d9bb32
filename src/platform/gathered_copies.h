#pragma once
// Copies over existing files that share their commits.
//
// A new version has to be on the disk before it takes the name of the old one, and waiting for that
// is most of what replacing a small file costs. It takes hardly longer for many files than for one.
// So the new versions wait, complete and without a name, until there are many of them. Then all are
// committed at once and each is put in place. At any time each target is the old file or the new
// one. A target is not locked while its new version waits.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/copy_file.h"
#include "platform/file_identity.h"
#include "platform/win32.h"
#include "platform/written_files.h"

namespace platform {

class GatheredCopies {
 public:
  using Id = WrittenFiles::Name;

  // The end of a copy that was put off.
  struct End {
    Id id;
    DWORD error;        // ERROR_SUCCESS if the target is the new version
    FileIdentity file;  // the target, on success
    const std::string& from;
    const std::string& to;
  };
  using OnEnd = std::function<void(const End&)>;

  // `onEnd` is called from copy() and finish(), for earlier copies alone.
  explicit GatheredCopies(OnEnd onEnd);
  GatheredCopies(const GatheredCopies&) = delete;
  GatheredCopies& operator=(const GatheredCopies&) = delete;
  // Drops what was not finished; those targets keep their old content.
  ~GatheredCopies();

  enum class Outcome { Copied, PutOff, Failed };

  // Copies a file as copyFile() does, or puts that off after everything that may fail because of
  // the two files has been done. On failure the error is set.
  Outcome copy(const char* source, const char* target, bool failIfExists,
               const CopyProgress& progress, Id id);
  // Ends all copies that were put off.
  void finish();
  // True if a failure with this error may be due to what was put off, which takes descriptors and
  // space on the disk.
  bool mayCause(DWORD error) const;
  // The files that the copies which were put off will replace.
  const WrittenFiles& targets() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace platform
