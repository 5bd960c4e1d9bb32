// test.

#include "archive_reading.h"
#include "commands.h"
#include "password.h"
#include "progress.h"
#include "text.h"

namespace {

void reportUnusedBytes(const std::string& zip, const FileSystem::Archive& archive,
                       const Output& output) {
  const std::uint64_t unused = archive.unusedBytes();
  if (unused == 0) return;
  output.warn(std::to_string(unused) + " bytes of " + inQuotes(zip) +
              " belong to no entry; an append that was interrupted leaves such bytes, and every "
              "entry from before is still there");
}

}  // namespace

void test(const std::string& zip, const PasswordSource& source, Output& output) {
  const FileSystem::Archive archive = openArchive(zip);
  const std::vector<FileSystem::Entry>& entries = archive.entries();
  FileSystem::Options options;
  options.setPassword(passwordFor(entries, source, output));
  FileSystem::Report report;
  {
    Progress progress(output, "testing " + zip);
    report = archive.test(entries, options.setProgress(progress.callback()));
  }
  for (std::size_t i = 0; i < report.items.size(); ++i) {
    const FileSystem::ItemResult& item = report.items[i];
    if (item.reason == FileSystem::Reason::None) {
      output.detail("sound " + printable(item.name));
    } else {
      output.fail(inQuotes(item.name) + ": " + failureText(entries[i], item.reason));
    }
  }
  reportUnusedBytes(zip, archive, output);
  const std::string verdict =
      output.failures() == 0 ? "no errors" : counted(output.failures(), "error", "errors");
  output.summary("tested " + counted(entries.size(), "entry", "entries") + " of " + printable(zip) +
                 ": " + verdict);
}
