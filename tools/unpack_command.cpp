// unpack.

#include "archive_reading.h"
#include "commands.h"
#include "password.h"
#include "progress.h"
#include "text.h"
#include "unpacking.h"

using FileSystem::Entry;
using FileSystem::ExistingFiles;

void unpack(const std::string& zip, const std::string& directory, bool overwrite,
            const PasswordSource& source, const KeptRequest& kept, Output& output) {
  const FileSystem::Archive archive = openArchive(zip);
  const std::vector<Entry>& entries = archive.entries();
  FileSystem::Options options;
  keep(kept, options);
  options.setExisting(overwrite ? ExistingFiles::Replace : ExistingFiles::Keep);
  // An entry whose file is kept needs no password.
  options.setPassword(overwrite ? passwordFor(entries, source, output)
                                : givenPassword(source, output));
  Unpacked unpacked;
  {
    Progress progress(output, "unpacking " + zip);
    unpacked = unpackEntries(archive, entries, directory, options, progress, output);
  }
  if (!unpacked.withoutPassword.empty()) {
    const std::vector<Entry> encrypted = unpacked.withoutPassword;
    options.setPassword(passwordFor(encrypted, source, output));
    Progress progress(output, "unpacking " + zip);
    const Unpacked more = unpackEntries(archive, encrypted, directory, options, progress, output);
    unpacked.files += more.files;
    unpacked.kept += more.kept;
    for (const Entry& entry : more.withoutPassword) {
      output.fail("cannot extract " + inQuotes(entry.name) + ": " +
                  failureText(entry, FileSystem::Reason::PasswordMissing));
    }
  }
  const std::string existing =
      unpacked.kept == 0 ? ""
                         : ", kept " + counted(unpacked.kept, "existing file", "existing files");
  output.summary("unpacked " + counted(unpacked.files, "file", "files") + " into " +
                 printable(directory) + existing);
}
