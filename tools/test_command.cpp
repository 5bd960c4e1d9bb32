// test.
//
// This is the one command that uses the zip engine itself. The library reads an
// entry to memory by its name, which reads the archive's directory for every
// entry, holds all of the content, and does not distinguish an empty entry from a
// damaged one.

#include <memory>

#include "archive.h"
#include "commands.h"
#include "extraction.h"
#include "password.h"
#include "paths.h"
#include "progress.h"
#include "text.h"
#include "zip/engine.h"

namespace {

struct ReaderCloser {
  void operator()(ZipReader* reader) const { ZipCloseReader(reader); }
};
using Reader = std::unique_ptr<ZipReader, ReaderCloser>;

// Reads all of the reader's current entry. Returns false if it is damaged or
// cannot be read.
bool readEntry(ZipReader* reader, const char* password, Progress& progress) {
  if (ZipOpenEntry(reader, nullptr, nullptr, 0, password) != 0) return false;
  std::vector<unsigned char> block(256 << 10);
  int read = 0;
  do {
    read = ZipReadEntry(reader, block.data(), static_cast<std::uint32_t>(block.size()));
    if (read > 0) progress.advance(static_cast<std::uint64_t>(read));
  } while (read > 0);
  ZipCloseEntry(reader);
  return read == 0;
}

void reportUnusedBytes(const std::string& zip, std::size_t entries, const Output& output) {
  const auto directory = readCentralDirectory(systemPath(zip), entries);
  if (!directory || directory->unusedBytes == 0) return;
  output.warn(std::to_string(directory->unusedBytes) + " bytes of " + inQuotes(zip) +
              " belong to no entry; an append that was interrupted leaves such bytes, and every "
              "entry from before is still there");
}

}  // namespace

void test(const std::string& zip, const PasswordSource& source, Output& output) {
  const Archive archive(zip, FileSystem::kAccessRead);
  const std::vector<Entry> entries = archive.entries();
  const std::string password = passwordFor(entries, source, output);
  std::uint64_t bytes = 0;
  for (const Entry& entry : entries) bytes += entry.record.size;
  {
    Progress progress(output, "testing " + zip, bytes);
    const Reader reader(ZipOpenReader(zip.c_str()));
    ZipFirstEntry(reader.get());
    const char* const passwordOrNull = password.empty() ? nullptr : password.c_str();
    for (const Entry& entry : entries) {
      const bool isNameUsable = entry.record.nameLength <= kLongestEntryName;
      if (isNameUsable && readEntry(reader.get(), passwordOrNull, progress)) {
        output.detail("sound " + printable(entry.name));
      } else {
        output.fail(inQuotes(entry.name) + ": " + readFailure(entry, !password.empty()));
      }
      ZipNextEntry(reader.get());
    }
  }
  reportUnusedBytes(zip, entries.size(), output);
  const std::string verdict =
      output.failures() == 0 ? "no errors" : counted(output.failures(), "error", "errors");
  output.summary("tested " + counted(entries.size(), "entry", "entries") + " of " + printable(zip) +
                 ": " + verdict);
}
