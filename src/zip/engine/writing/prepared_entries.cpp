// Entries that are prepared in memory, and the workers of a writer.

#include <memory>

#include "zip/engine/writing/writer.h"

using namespace zip_engine;

void ZipSetWorkers(ZipWriter* writer, std::uint32_t workers,
                   bool (*run)(std::uint32_t, void (*)(std::uint32_t, const void*), const void*,
                               void*),
                   void* context) {
  if (writer == nullptr || workers == 0) return;
  using Task = std::function<void(std::size_t)>;
  const auto call = [](std::uint32_t index, const void* task) {
    (*static_cast<const Task*>(task))(index);
  };
  writer->encoders.deflater.setWorkers(workers, [=](std::size_t count, const Task& task) {
    return run(static_cast<std::uint32_t>(count), call, &task, context);
  });
}

ZipWriter* ZipOpenPreparer() {
  auto writer = std::make_unique<ZipWriter>();
  writer->memory.emplace();
  return writer.release();
}

ZipPreparedEntry* ZipTakePrepared(ZipWriter* preparer) {
  return preparer == nullptr ? nullptr : preparer->prepared.release();
}

void ZipFreePrepared(ZipPreparedEntry* entry) {
  const std::unique_ptr<ZipPreparedEntry> owner(entry);
}

std::uint64_t ZipPreparedSize(const ZipPreparedEntry& entry) {
  return entry.record.uncompressedSize;
}

int ZipAppendPrepared(ZipWriter* writer, const ZipPreparedEntry& entry) {
  if (writer == nullptr) return kFailure;
  writer->dropOpen();
  const std::uint64_t start = writer->archive.position();
  if (!writer->archive.append(entry.bytes.data(), entry.bytes.size())) {
    writer->archive.rewind(start);
    return kFailure;
  }
  writer->add(entry.record, start);
  return kSuccess;
}
