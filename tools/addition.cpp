#include "addition.h"

#include <filesystem/files.h>

#include <algorithm>
#include <unordered_map>

#include "entry_names.h"
#include "file_tree.h"
#include "links.h"
#include "paths.h"
#include "text.h"

namespace {

using Kind = Source::Kind;

void appendDirectory(const std::string& path, const KeptRequest& kept, Output& output,
                     std::vector<Source>& sources) {
  const std::string base = withBackslash(path);
  const std::string own = lastComponent(withoutEndSeparators(path));
  const bool isNamed = !own.empty() && own != "." && own != "..";
  const std::string prefix = isNamed ? own + '\\' : "";
  const Tree tree = filesBelow(base, kept.noLinks ? Links::kFollowed : Links::kListed);
  reportLeftOut(tree, output);
  if (!kept.noDirectories) {
    if (isNamed) sources.push_back({base, prefix, Kind::kDirectory});
    for (const std::string& below : tree.directories) {
      sources.push_back({base + below, prefix + below, Kind::kDirectory});
    }
  }
  for (const std::string& file : tree.files) sources.push_back({base + file, prefix + file});
  for (const std::string& link : tree.links) {
    sources.push_back({base + link, prefix + link, Kind::kLink});
  }
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
