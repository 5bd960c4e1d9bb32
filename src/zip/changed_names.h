#pragma once
// The names of the entries that a change removes and inserts.

#include <filesystem/results.h>

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace zip {

// Finds out which entries of an archive a change takes out of it, and which of its removals and
// insertions cannot be done. These have one numbering, removals first.
//
// A removal takes the entries of exactly its name. Names of insertions are equal if they differ in
// `/` and `\` alone, which programs take for one separator.
class ChangedNames {
 public:
  // The names outlive the object.
  ChangedNames(const std::vector<std::string>& removals,
               const std::vector<const std::string*>& insertions);

  struct Failure {
    std::size_t index;
    FileSystem::Reason reason;
    std::string other;  // with Reason::NameTaken, the name of the earlier insertion
  };
  // Returns the first insertion whose name rules it out, whatever the archive has.
  const std::optional<Failure>& invalidName() const { return invalidName_; }

  // Notes that the archive has an entry of this name. Names of entries are those that callers know.
  void visit(const std::string& name);
  // Begins again, for an archive that was opened again.
  void forgetEntries();

  // Returns the first removal whose entry was not visited or, if `keepsExisting`, the first
  // insertion whose entry was.
  std::optional<Failure> failure(bool keepsExisting) const;
  // True if an entry was visited that the change takes out of the archive.
  bool dropsAny() const { return dropsAny_; }
  // True if the change takes entries of this name out of the archive.
  bool drops(const std::string& name) const;

 private:
  struct Change {
    std::size_t index;
    bool isVisited = false;
  };

  std::unordered_map<std::string, Change> removals_;
  std::unordered_map<std::string, Change> insertions_;  // with backslashes
  std::optional<Failure> invalidName_;
  bool dropsAny_ = false;
};

}  // namespace zip
