#include "zip/rewrite.h"

#include <cstddef>
#include <optional>

#include "platform/replace_file.h"
#include "zip/temporary_file.h"

namespace zip {
namespace {

// Copies the entries that stay. Returns their number, or nothing if one cannot be copied.
std::optional<std::size_t> copyEntries(ArchiveReader& reader, ArchiveWriter& writer,
                                       const NameSet& dropped) {
  std::size_t count = 0;
  EntryInfo info;
  const bool complete = reader.forEachEntry([&] {
    if (!reader.describe(info)) return false;
    // A name that was cut is not the one that the caller passed.
    if (!info.nameIsCut && dropped.count(callerName(info.name)) != 0) return true;
    ++count;
    return writer.copy(reader);
  });
  return complete ? std::optional(count) : std::nullopt;
}

}  // namespace

// The handle is opened before the reader, so that it is never that of a newer file.
Rewrite::Rewrite(const std::string& path)
    : path_(path),
      original_(CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)),
      reader_(path.c_str()) {}

Rewrite::Result Rewrite::run(const NameSet& dropped,
                             const std::function<bool(ArchiveWriter&)>& add) {
  const TemporaryFile copy;
  if (!copy || !original_ || !reader_) return Result::Failed;
  ArchiveWriter writer(copy.path(), ArchiveWriter::Mode::Create);
  if (!writer) return Result::Failed;
  const std::optional<std::size_t> kept = copyEntries(reader_, writer, dropped);
  if (!kept || (add && !add(writer))) return Result::Failed;
  if (*kept == 0 && !add) return Result::NothingLeft;
  if (writer.commit(reader_.globalComment().c_str()) != ArchiveWriter::Commit::Complete) {
    return Result::Failed;
  }
  reader_.close();
  return platform::replaceFile(original_.get(), path_.c_str(), copy.path()) ? Result::Replaced
                                                                            : Result::Failed;
}

}  // namespace zip
