#include "zip/rewrite.h"

#include <set>
#include <string_view>

#include "path/zero_terminated.h"
#include "platform/replace_file.h"
#include "zip/temporary_file.h"

namespace zip {
namespace {

// Copies the entries that stay, and sets `any` if there is one. Returns false if one cannot be
// copied.
bool copyEntries(ArchiveReader& reader, ArchiveWriter& writer, const NameSet& dropped, bool& any) {
  return reader.forEachEntry([&] {
    const EntryInfo info = reader.describe();
    // A name that was cut is not the one that the caller passed.
    if (!info.nameIsCut && dropped.count(callerName(info.name)) != 0) return true;
    any = true;
    return writer.copy(reader);
  });
}

}  // namespace

Rewrite::Rewrite(const std::string& path) : path_(path) { open(); }

// The handle is opened before the reader, so that it is never that of a newer file.
void Rewrite::open() {
  original_.reset(CreateFileA(path_.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                              nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  reader_.emplace(path_.c_str());
}

// Walks over the archive once, since looking for a name does so too.
bool Rewrite::hasAll(const std::vector<std::string>& names) {
  std::set<std::string_view> missing;
  for (const std::string& name : names) missing.insert(FileSystem::Detail::upToZero(name));
  reader_->forEachEntry([&] {
    const EntryInfo info = reader_->describe();
    if (!info.nameIsCut) missing.erase(callerName(info.name));
    return !missing.empty();
  });
  return missing.empty();
}

Rewrite::Result Rewrite::run(const NameSet& dropped,
                             const std::function<bool(ArchiveWriter&)>& add) {
  if (!original_ || !*reader_) return Result::Failed;
  if (!platform::canReplaceFile(original_.get(), path_.c_str())) return runInPlace(dropped, add);
  const TemporaryFile copy;
  if (!copy) return Result::Failed;
  ArchiveWriter writer(copy.path(), ArchiveWriter::Mode::Create);
  if (!writer) return Result::Failed;
  bool keepsAny = false;
  if (!copyEntries(*reader_, writer, dropped, keepsAny) || (add && !add(writer))) {
    return Result::Failed;
  }
  if (!keepsAny && !add) return Result::NothingLeft;
  if (writer.commit(reader_->globalComment().c_str()) != ArchiveWriter::Commit::Complete) {
    return Result::Failed;
  }
  reader_->close();
  return platform::replaceFile(original_, path_.c_str(), copy.path()) ? Result::Replaced
                                                                      : Result::Failed;
}

// The writer opens the archive for itself alone, and finds the entries in what is there then.
Rewrite::Result Rewrite::runInPlace(const NameSet& dropped,
                                    const std::function<bool(ArchiveWriter&)>& add) {
  reader_.reset();
  original_.reset();
  const Result result = changeInPlace(dropped, add);
  open();
  return result;
}

Rewrite::Result Rewrite::changeInPlace(const NameSet& dropped,
                                       const std::function<bool(ArchiveWriter&)>& add) {
  ArchiveWriter writer(path_.c_str(), ArchiveWriter::Mode::Append);
  if (!writer) return Result::Failed;
  const std::uint32_t kept = writer.drop([&](const std::string& stored) {
    return stored.size() <= kLongestName && dropped.count(callerName(stored)) != 0;
  });
  const bool isEmpty = kept == 0 && !add;
  if (isEmpty || (add && !add(writer))) {
    writer.abandon();
    return isEmpty ? Result::NothingLeft : Result::Failed;
  }
  return writer.commit(nullptr) == ArchiveWriter::Commit::Complete ? Result::Replaced
                                                                   : Result::Failed;
}

}  // namespace zip
