#pragma once
// The copy of the content of a folder.

#include <filesystem/results.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "files/tree_call.h"
#include "platform/copy_file.h"
#include "platform/file_identity.h"
#include "platform/gathered_copies.h"
#include "platform/open_directory.h"
#include "platform/win32.h"
#include "platform/written_files.h"

namespace FileSystem::Detail {

// Copies the files of each folder before its subfolders, and those of the source itself last. What
// it has created is no part of the source, in which the target may be.
class TreeCopy {
 public:
  // Both paths end in a separator, or what follows is joined to a name.
  TreeCopy(std::string source, std::string target, TreeCall& call);

  // Counts the files, for the progress of the call.
  void count();
  // Copies everything. The target exists. `created` are the folders that were created for it.
  void run(const std::vector<std::string>& created);

 private:
  using OpenDirectory = platform::OpenDirectory;

  struct File {
    std::string stored;
    std::string shown;  // empty if no path can name the file
    bool isRegular;
  };
  struct Subfolder {
    std::string name;
    bool isLink;
  };
  struct Listing {
    std::vector<File> files;  // all but directories and links to them
    std::vector<Subfolder> folders;
    std::vector<std::string> unnamed;  // stored names of directories that no path can name
  };
  // A folder of the source and its copy.
  struct Folder {
    std::string name;  // below the source, with separator; empty for the source itself
    OpenDirectory from;
    std::optional<OpenDirectory> to{};
    DWORD targetError = ERROR_SUCCESS;
    bool hasExisting = false;  // the file before had its name in the target already
  };
  // A folder of the source that the copy is in. Its own stack serves trees that are deeper than the
  // call stack.
  struct Level {
    std::string name;
    platform::FileIdentity identity;
    std::vector<Subfolder> pending;  // the next one last
    // The folder and its copy; closed at the deeper levels.
    std::optional<OpenDirectory> from{};
    std::optional<OpenDirectory> to{};
  };

  static Listing list(OpenDirectory& directory);
  void enterSource();
  std::vector<Subfolder> listTop();
  void enter(const Subfolder& subfolder);
  bool isPassedOver(const platform::FileIdentity& folder, bool isLink) const;
  void copyAll();
  std::vector<Subfolder> copyFiles(Folder& folder, const OpenDirectory* above);
  void makeTarget(Folder& folder, const OpenDirectory* above);
  void copyFile(Folder& folder, const File& file);
  Reason copyTo(Folder& folder, const File& file, std::uint64_t& other);
  DWORD tryToCopy(Folder& folder, const File& file, std::uint64_t& other);
  std::uint64_t writtenAs(const OpenDirectory::Named& named) const;
  DWORD copyOver(Folder& folder, const File& file);
  void endWaiting(const platform::GatheredCopies::End& end);
  Reason failure(const Folder& folder, const File& file, DWORD error) const;

  const std::string source_;
  const std::string target_;
  TreeCall& call_;
  bool isTopListed_ = true;  // all folders directly in the source are known
  platform::FileIdentity targetFolder_;
  bool isInTarget_ = false;  // the target is in the source, and the copy has come to it
  std::vector<Level> levels_;
  platform::WrittenFiles created_;  // folders
  platform::WrittenFiles written_;
  platform::GatheredCopies gathered_;
  platform::CopyProgress progress_;
};

}  // namespace FileSystem::Detail
