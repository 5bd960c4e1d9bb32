#include "zip/rewrite.h"

#include <utility>

#include "platform/replace_file.h"
#include "reporting/reasons.h"

namespace zip {

using FileSystem::Reason;
using FileSystem::Detail::ProgressRelay;

namespace {

// Reports what is copied. Small entries are many, so that each one's own report would take a
// noticeable part of the time.
class CopyProgress {
 public:
  explicit CopyProgress(ProgressRelay& progress) : progress_(progress) {}

  // The copying of an entry begins. Returns false if the call is cancelled, as the next two do.
  bool begin(std::string name) {
    name_ = std::move(name);
    constexpr int kMostEntries = 1000;
    return ++entries_ % kMostEntries != 0 || report();
  }
  bool advance(std::uint64_t bytes) {
    bytes_ += bytes;
    return bytes_ < kReadBlock || report();
  }
  bool report() {
    if (!progress_.isNeeded()) return true;
    reported_ = name_;
    return progress_.begin(reported_) && progress_.advance(std::exchange(bytes_, 0));
  }

 private:
  ProgressRelay& progress_;
  std::string name_;
  std::string reported_;  // remains until the next report
  int entries_ = 0;
  std::uint64_t bytes_ = 0;
};

}  // namespace

Rewrite::Rewrite(const std::string& path) : path_(path) { open(); }

// The handle is opened before the reader, so that it is never that of a newer file.
void Rewrite::open() {
  original_.reset(CreateFileA(path_.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                              nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  const DWORD error = original_ ? ERROR_SUCCESS : GetLastError();
  reader_.emplace(path_.c_str());
  if (!original_ || !*reader_) reason_ = reasonForArchive(path_.c_str(), error);
}

std::string Rewrite::nameOf(const EntryInfo& entry) const {
  return entry.nameIsCut ? reader_->record().name : callerName(entry.name);
}

bool Rewrite::fail(Reason reason) {
  reason_ = reason;
  return false;
}

bool Rewrite::failWithError() {
  return fail(FileSystem::Detail::reasonOfError(GetLastError(), Reason::WriteFailed));
}

bool Rewrite::run(const Plan& plan, ProgressRelay& progress) {
  if (!original_ || !*reader_) return false;
  reason_ = Reason::None;
  if (!platform::canReplaceFile(original_.get(), path_.c_str())) return runInPlace(plan);
  const TemporaryFile copy;
  if (!copy) return failWithError();
  ArchiveWriter writer(copy.path(), ArchiveWriter::Mode::Create);
  if (!writer) return fail(writer.reason());
  if (!copyEntries(writer, plan, progress) || (plan.add && !plan.add(writer))) return false;
  if (!keepsAny_ && !plan.add && !plan.mayBeEmpty) return false;
  if (!writer.commit(reader_->globalComment().c_str())) return fail(writer.reason());
  reader_->close();
  return putInPlace(copy, progress);
}

// Copying a large archive takes long, so that the host sees it and can cancel it.
bool Rewrite::putInPlace(const TemporaryFile& copy, ProgressRelay& progress) {
  platform::CopyProgress report;
  if (progress.isNeeded()) {
    if (!progress.begin(path_)) return fail(Reason::Cancelled);
    report = [&](std::uint64_t) { return progress.advance(0); };
  }
  return platform::replaceFile(original_, path_.c_str(), copy.path(), report) || failWithError();
}

bool Rewrite::copyEntries(ArchiveWriter& writer, const Plan& plan, ProgressRelay& progress) {
  CopyProgress copied(progress);
  const auto advance = [&](std::uint64_t size) { return copied.advance(size); };
  keepsAny_ = false;
  const bool areAllCopied = reader_->forEachEntry([&] {
    const EntryInfo info = reader_->describe();
    std::string name = nameOf(info);
    if (plan.drops(name)) return true;
    keepsAny_ = true;
    failedEntry_ = name;
    return copied.begin(std::move(name)) && writer.copy(*reader_, advance);
  });
  if (areAllCopied) {
    failedEntry_.clear();
    return copied.report() || fail(Reason::Cancelled);
  }
  const Reason reason = progress.isCancelled() ? Reason::Cancelled : writer.reason();
  if (progress.isCancelled() || writer.isArchiveAtFault()) failedEntry_.clear();
  return fail(reason);
}

// The writer opens the archive for itself alone, and finds the entries in what is there then.
bool Rewrite::runInPlace(const Plan& plan) {
  reader_.reset();
  original_.reset();
  const bool isChanged = changeInPlace(plan);
  const Reason reason = reason_;
  open();
  reason_ = reason;
  return isChanged;
}

bool Rewrite::changeInPlace(const Plan& plan) {
  ArchiveWriter writer(path_.c_str(), ArchiveWriter::Mode::Append);
  if (!writer) return fail(writer.reason());
  const std::uint32_t kept =
      writer.drop([&](const std::string& stored) { return plan.drops(callerName(stored)); });
  if (kept == 0 && !plan.add && !plan.mayBeEmpty) return false;
  if (plan.add && !plan.add(writer)) return false;
  return writer.commit(nullptr) || fail(writer.reason());
}

std::function<bool(const std::string&)> dropping(const NameSet& names) {
  return [&names](const std::string& name) { return names.count(name) != 0; };
}

}  // namespace zip
