#include "addition.h"

#include <filesystem/files.h>
#include <filesystem/trees.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <unordered_map>

#include "entry_names.h"
#include "links.h"
#include "paths.h"
#include "text.h"

namespace {

using FileSystem::ItemResult;
using FileSystem::Options;
using FileSystem::Reason;
using FileSystem::Report;
using Kind = Source::Kind;

// True if both paths exist and are the same file.
bool isSameFile(const std::string& a, const std::string& b) {
  std::error_code error;
  return std::filesystem::equivalent(systemPath(a), systemPath(b), error);
}

// Appends what is below a directory: directories, then files, then links.
void appendTree(const std::string& base, const std::string& prefix, const KeptRequest& kept,
                Output& output, std::vector<Source>& sources) {
  const Report report = FileSystem::listTree(
      base.c_str(), "*", Options().setLinks(!kept.noLinks).setFolders(!kept.noDirectories));
  if (report.reason != Reason::None) {
    output.fail("cannot list the directory " + inQuotes(base) + ": " +
                FileSystem::reasonText(report.reason));
  }
  std::map<Kind, std::vector<std::string>> below;
  for (const ItemResult& item : report.items) {
    if (item.reason != Reason::None) {
      output.fail("left out " + inQuotes(nativePath(base + item.name)) + ": " +
                  FileSystem::reasonText(item.reason));
    } else {
      const Kind kind = item.isFolder ? Kind::kDirectory : item.isLink ? Kind::kLink : Kind::kFile;
      below[kind].push_back(item.isFolder ? item.name + '\\' : item.name);
    }
  }
  for (const Kind kind : {Kind::kDirectory, Kind::kFile, Kind::kLink}) {
    std::sort(below[kind].begin(), below[kind].end());
    for (const std::string& name : below[kind]) {
      sources.push_back({base + name, prefix + name, kind});
    }
  }
}

void appendDirectory(const std::string& path, const KeptRequest& kept, Output& output,
                     std::vector<Source>& sources) {
  const std::string base = withBackslash(path);
  const std::string own = lastComponent(withoutEndSeparators(path));
  const bool isNamed = !own.empty() && own != "." && own != "..";
  const std::string prefix = isNamed ? own + '\\' : "";
  if (!kept.noDirectories && isNamed) sources.push_back({base, prefix, Kind::kDirectory});
  appendTree(base, prefix, kept, output, sources);
}

// Drops a file that occurs again. Two files would become one entry, of which one would be lost.
std::vector<Source> withoutRepetitions(const std::vector<Source>& sources) {
  std::unordered_map<std::string, const Source*> byName;
  std::vector<Source> result;
  for (const Source& source : sources) {
    const auto [found, isNew] = byName.emplace(withBackslashes(source.name), &source);
    if (isNew) {
      result.push_back(source);
    } else if (found->second->path != source.path &&
               !isSameFile(found->second->path, source.path)) {
      throw Failure("cannot add " + inQuotes(found->second->path) + " and " +
                    inQuotes(source.path) + ": both would be the entry " + inQuotes(source.name));
    }
  }
  return result;
}

}  // namespace

std::vector<Source> sourcesOf(const AddRequest& request, Output& output) {
  std::vector<Source> sources;
  for (const std::string& file : request.files) {
    if (!request.kept.noLinks && isKeptLink(systemPath(file))) {
      sources.push_back({file, lastComponent(file), Kind::kLink});
    } else if (FileSystem::FolderExists(file.c_str()) != 0) {
      appendDirectory(file, request.kept, output, sources);
    } else if (isSameFile(file, request.zip)) {
      output.warn("left out " + inQuotes(file) + ": it is the archive itself");
    } else {
      sources.push_back({file, lastComponent(file)});
    }
  }
  std::erase_if(sources, [&](const Source& source) {
    return source.kind == Kind::kFile && isSameFile(source.path, request.zip);
  });
  if (!request.name.empty() && sources.size() == 1) sources[0].name = request.name;
  return withoutRepetitions(sources);
}
