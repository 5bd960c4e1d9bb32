#pragma once
// Applying removals and insertions to an archive.

#include <filesystem/archive_change.h>

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "reporting/progress_relay.h"
#include "zip/archive_writer.h"
#include "zip/changed_names.h"
#include "zip/entry_adder.h"
#include "zip/host_workers.h"

namespace zip {

// A folder or a link that is inserted itself.
struct FolderSource {
  std::string path;
};
struct LinkSource {
  std::string path;
};

struct Insertion {
  // The first one is the path of a file.
  std::variant<std::string, std::vector<unsigned char>, FileSystem::ContentSource, FolderSource,
               LinkSource>
      content;
  std::string name;
  std::string comment;
};

struct Changes {
  std::vector<std::string> removals;
  std::vector<Insertion> insertions;
};

// One call of apply().
class ChangeApplication {
 public:
  ChangeApplication(const Changes& changes, const char* archive, const FileSystem::Options& options,
                    const EntrySettings& settings, FileSystem::Detail::ProgressRelay& progress);

  FileSystem::Report run();

 private:
  void apply();
  void create();
  void append(ArchiveWriter& writer);
  void rewrite();
  bool canApply();
  bool canOpenFiles();
  bool reportRemovals();
  bool addAll(ArchiveWriter& writer);
  FileSystem::Reason add(ArchiveWriter& writer, EntryAdder& adder,
                         const Insertion& insertion) const;
  void expect(std::uint64_t copied);

  void fail(const ChangedNames::Failure& failure);
  void failArchive(FileSystem::Reason reason);

  const Changes& changes_;
  const std::string path_;
  const bool keepsExisting_;
  const EntrySettings settings_;
  FileSystem::Detail::ProgressRelay& progress_;
  HostWorkers workers_;
  ChangedNames names_;
  // Of all removals and insertions. Made first, so that no memory is needed after the commit.
  std::vector<FileSystem::ItemResult> items_;
  FileSystem::Report report_;
};

}  // namespace zip
