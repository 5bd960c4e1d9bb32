// remove.

#include "archive.h"
#include "commands.h"
#include "entry_names.h"
#include "progress.h"
#include "text.h"

namespace {

// The library removes entries without regard to letter case. One that is not
// selected must not be removed with another.
void requireNoOtherCase(const std::vector<std::string>& names,
                        const std::vector<std::size_t>& selected) {
  std::vector<bool> isSelected(names.size(), false);
  for (const std::size_t i : selected) isSelected[i] = true;
  const CaseIndex index(names);
  for (const std::size_t i : selected) {
    for (const std::size_t twin : index.twinsOf(names[i])) {
      if (isSelected[twin]) continue;
      throw Failure("cannot remove " + inQuotes(names[i]) + " without " + inQuotes(names[twin]) +
                    ", whose name differs in letter case only");
    }
  }
}

}  // namespace

void remove(const std::string& zip, const std::vector<std::string>& patterns, Output& output) {
  Archive archive(zip, FileSystem::kAccessReadWrite);
  const std::vector<std::string>& names = archive.names();
  const std::vector<std::size_t> selected = selectEntries(names, patterns, zip);
  requireNoOtherCase(names, selected);
  if (selected.size() == names.size()) {
    throw Failure("cannot remove " + inQuotes(names[selected.back()]) +
                  ": it is the only entry of " + inQuotes(zip) +
                  " that would be left; delete the archive instead");
  }
  std::vector<std::string> removed;
  removed.reserve(selected.size());
  for (const std::size_t i : selected) removed.push_back(names[i]);
  const Progress progress(output, "removing from " + zip);
  if (archive.zip().removeEntries(removed) == 0) {
    throw Failure("cannot remove from " + inQuotes(zip) +
                  ": it cannot be written, or an entry that is kept is damaged");
  }
  for (const std::string& name : removed) output.detail("removed " + printable(name));
}
