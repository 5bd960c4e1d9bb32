// The writing calls for entries that exist: those of the archive that is written, and those that
// are copied from another one.

#include <string>

#include "zip/engine/container/entry_name.h"
#include "zip/engine/reading/entry_map.h"
#include "zip/engine/reading/reader.h"
#include "zip/engine/writing/entry_copy.h"
#include "zip/engine/writing/writer.h"

using namespace zip_engine;

bool ZipHasEntry(ZipWriter* writer, const char* name) {
  if (writer == nullptr || name == nullptr) return false;
  return NameIndex().find(writer->archive.before(), name) != NameIndex::kNone;
}

void ZipVisitNames(ZipWriter* writer, void (*visit)(const char* name, void* context),
                   void* context) {
  if (writer == nullptr) return;
  const CentralDirectory& before = writer->archive.before();
  std::string converted;
  for (std::size_t at = 0; at < before.blob.size();) {
    const CentralRecord record = recordAt(before, at);
    const std::string name(oemName(record, converted));
    visit(name.c_str(), context);
    at += record.size();
  }
}

std::uint32_t ZipDropEntries(ZipWriter* writer, bool (*drops)(const char* name, void* context),
                             void* context) {
  if (writer == nullptr) return 0;
  KeptRecords& kept = writer->kept.emplace();
  const CentralDirectory& before = writer->archive.before();
  std::string converted;
  for (std::size_t at = 0; at < before.blob.size();) {
    const CentralRecord record = recordAt(before, at);
    const std::string name(oemName(record, converted));
    if (!drops(name.c_str(), context)) {
      kept.blob.insert(kept.blob.end(), record.bytes, record.bytes + record.size());
      ++kept.count;
    }
    at += record.size();
  }
  if (kept.count == 0) writer->archive.beginPastEnd();
  return static_cast<std::uint32_t>(kept.count);
}

int ZipCopyEntry(ZipWriter* writer, ZipReader* reader,
                 bool (*advance)(std::uint64_t size, void* context), void* context) {
  if (writer == nullptr || reader == nullptr) return kFailure;
  writer->dropOpen();
  CentralRecord central;
  const LocalEntry* const local = readCurrent(*reader, central);
  if (local == nullptr || !local->hasSumsOf(central)) return ZipStatusDamagedSource;
  EntryRecord record = recordOf(central, *local);
  if (!fitsFields(record, 0)) return ZipStatusTooLarge;
  const std::uint64_t start = writer->archive.position();
  const int status =
      copyEntry(writer->archive, record, *reader, local->dataPosition(),
                [&](std::uint64_t size) { return advance == nullptr || advance(size, context); });
  if (status != kSuccess) {
    writer->archive.rewind(start);
    return status;
  }
  writer->add(record, start);
  return kSuccess;
}
