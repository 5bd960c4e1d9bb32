#include "unpacking.h"

#include "archive_reading.h"
#include "text.h"

using FileSystem::Entry;
using FileSystem::ItemResult;
using FileSystem::Reason;

namespace {

std::string reasonOf(const Entry& entry, const ItemResult& item) {
  if (item.reason == Reason::SameFile) return "its file is that of " + inQuotes(item.other);
  return failureText(entry, item.reason);
}

}  // namespace

Unpacked unpackEntries(const FileSystem::Archive& archive, const std::vector<Entry>& entries,
                       const std::string& directory, FileSystem::Options options,
                       Progress& progress, Output& output) {
  options.setProgress(progress.callback());
  const FileSystem::Report report = archive.unpack(entries, directory.c_str(), options);
  if (report.reason != Reason::None) {
    throw Failure("cannot create or write to the directory " + inQuotes(directory) + ": " +
                  FileSystem::reasonText(report.reason));
  }
  Unpacked result;
  for (std::size_t i = 0; i < report.items.size(); ++i) {
    const Entry& entry = entries[i];
    const ItemResult& item = report.items[i];
    const std::string name = printable(entry.name);
    if (item.reason == Reason::None) {
      if (!entry.isFolder) ++result.files;
      output.detail("extracted " + name);
    } else if (item.reason == Reason::Exists && !entry.isFolder) {
      ++result.kept;
      output.detail("kept " + name);
    } else if (item.reason == Reason::NameTaken) {
      output.fail("the entry " + inQuotes(entry.name) + " occurs again: the last is unpacked");
    } else if (item.reason == Reason::IsALink && !options.links()) {
      output.detail("left out " + name);
    } else if (item.reason == Reason::PasswordMissing && options.password().empty()) {
      result.withoutPassword.push_back(entry);
    } else {
      output.fail("cannot extract " + inQuotes(entry.name) + ": " + reasonOf(entry, item));
    }
  }
  return result;
}
