#include "archive_reading.h"

#include <algorithm>

#include "output.h"
#include "text.h"
#include "wildcard.h"

using FileSystem::Entry;
using FileSystem::Reason;

FileSystem::Archive openArchive(const std::string& path) {
  FileSystem::Archive archive;
  const Reason reason = archive.open(path.c_str());
  switch (reason) {
    case Reason::None:
      return archive;
    case Reason::IsAFolder:
      throw Failure(inQuotes(path) + " is a directory");
    case Reason::NotAnArchive:
      throw Failure(inQuotes(path) + " is not a sound zip archive");
    case Reason::SplitArchive:
      throw Failure(inQuotes(path) + " is part of a split archive, which is not supported");
    default:
      throw Failure("cannot open " + inQuotes(path) + ": " + FileSystem::reasonText(reason));
  }
}

std::vector<Entry> selectEntries(const std::vector<Entry>& entries,
                                 const std::vector<std::string>& patterns, const std::string& zip) {
  std::vector<bool> isSelected(entries.size(), false);
  for (const std::string& pattern : patterns) {
    const bool isName = std::any_of(entries.begin(), entries.end(),
                                    [&](const Entry& entry) { return entry.name == pattern; });
    bool any = false;
    for (std::size_t i = 0; i < entries.size(); ++i) {
      const std::string& name = entries[i].name;
      if (isName ? name != pattern : !matches(pattern, name)) continue;
      isSelected[i] = true;
      any = true;
    }
    if (!any) throw Failure(inQuotes(zip) + " has no entry " + inQuotes(pattern));
  }
  std::vector<Entry> result;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (isSelected[i]) result.push_back(entries[i]);
  }
  return result;
}

std::string methodText(std::uint16_t method) {
  const std::string name = FileSystem::methodName(method);
  return name.empty() ? std::to_string(method) : name;
}

std::string failureText(const Entry& entry, Reason reason) {
  if (reason == Reason::UnsupportedMethod && FileSystem::canReadMethod(entry.method)) {
    return "it needs a window of more than 128 MB, or a variant of " + methodText(entry.method) +
           " that is not supported";
  }
  if (reason == Reason::UnsupportedMethod) {
    return "its compression method, " + methodText(entry.method) + ", is not supported";
  }
  return FileSystem::reasonText(reason);
}
