// add.

#include <filesystem/files.h>
#include <filesystem/path.h>

#include <algorithm>
#include <cstdio>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "archive.h"
#include "commands.h"
#include "file_tree.h"
#include "password.h"
#include "paths.h"
#include "progress.h"
#include "terminal.h"
#include "text.h"

namespace {

constexpr const char* kStandardInput = "-";

// A file and the entry that it becomes.
struct Source {
  std::string path;
  std::string name;
};

bool isDirectory(const std::string& path) { return FileSystem::FolderExists(path.c_str()) != 0; }

// The files of a directory become entries below its own name.
void appendDirectory(const std::string& path, Output& output, std::vector<Source>& sources) {
  const std::string base = withBackslash(path);
  const std::string own = FileSystem::extractFilename(withoutEndSeparators(path));
  const bool isNamed = !own.empty() && own != "." && own != "..";
  const std::string prefix = isNamed ? own + '\\' : "";
  for (const std::string& file : filesBelow(base, output)) {
    sources.push_back({base + file, prefix + file});
  }
}

// A later file replaces an earlier one of the same name.
std::vector<Source> lastOfEachName(const std::vector<Source>& sources) {
  std::unordered_map<std::string, std::size_t> last;
  for (std::size_t i = 0; i < sources.size(); ++i) last[sources[i].name] = i;
  std::vector<Source> result;
  for (std::size_t i = 0; i < sources.size(); ++i) {
    if (last[sources[i].name] == i) result.push_back(sources[i]);
  }
  return result;
}

std::vector<Source> sourcesOf(const AddRequest& request, Output& output) {
  std::vector<Source> sources;
  for (const std::string& file : request.files) {
    if (isDirectory(file)) {
      appendDirectory(file, output, sources);
    } else if (FileSystem::TestOpen(file.c_str(), FileSystem::kAccessRead) != 0) {
      sources.push_back({file, FileSystem::extractFilename(file)});
    } else {
      throw Failure("cannot read " + inQuotes(file) +
                    ": it does not exist, is not permitted, or another program uses it");
    }
  }
  std::erase_if(sources,
                [&](const Source& source) { return isSameFile(source.path, request.zip); });
  if (!request.name.empty() && sources.size() == 1) sources[0].name = request.name;
  return lastOfEachName(sources);
}

std::vector<unsigned char> readStandardInput() {
  constexpr std::size_t kBlock = 1 << 20;
  constexpr std::size_t kLargest = 0xFFFFFFFE;  // sizes are 32-bit, and the largest is reserved
  passBytes(stdin);
  std::vector<unsigned char> bytes;
  std::size_t size = 0;
  do {
    bytes.resize(size + kBlock);
    size += std::fread(bytes.data() + size, 1, kBlock, stdin);
    if (size > kLargest) throw Failure("standard input has 4 GiB or more");
  } while (size == bytes.size());
  if (std::ferror(stdin) != 0) throw Failure("cannot read standard input");
  bytes.resize(size);
  return bytes;
}

// Opens the archive, which is created if it does not exist.
Archive openOrCreate(const std::string& zip) {
  ZipArchive().create(zip.c_str(), 0);
  return Archive(zip, FileSystem::kAccessReadWrite);
}

void requireSensibleName(const AddRequest& request) {
  const bool hasInput =
      std::find(request.files.begin(), request.files.end(), kStandardInput) != request.files.end();
  const bool isSingle = request.files.size() == 1 && !isDirectory(request.files[0]);
  if (hasInput && (request.name.empty() || !isSingle)) {
    throw UsageError("standard input (-) is added alone and needs --name");
  }
  if (!request.name.empty() && !isSingle) throw UsageError("--name is for a single file");
}

// Adds files in batches, with a commit for each.
class Addition {
 public:
  Addition(Archive& archive, const std::vector<Source>& sources, Output& output)
      : archive_(archive), sources_(sources), output_(output) {}

  void run() {
    std::uint64_t total = 0;
    for (const Source& source : sources_) total += fileSize(source.path);
    Progress progress(output_, "adding to " + archive_.path(), total);
    // Replacing an entry copies the whole archive, so there is one batch then.
    const bool replaces = replacesEntry();
    for (std::size_t first = 0; first < sources_.size();) {
      constexpr std::uint64_t kBatchBytes = 256 << 20;
      std::uint64_t bytes = 0;
      std::size_t last = first;
      while (last < sources_.size() && (replaces || bytes < kBatchBytes)) {
        bytes += fileSize(sources_[last++].path);
      }
      addBatch(first, last);
      progress.advance(bytes);
      first = last;
    }
  }

 private:
  bool replacesEntry() const {
    const std::unordered_set<std::string> names(archive_.names().begin(), archive_.names().end());
    return std::any_of(sources_.begin(), sources_.end(),
                       [&](const Source& source) { return names.count(source.name) != 0; });
  }

  // The library stops at the first file that fails. It is reported, and the others are added.
  void addBatch(std::size_t first, std::size_t last) {
    while (first < last) {
      std::vector<std::pair<std::string, std::string>> files;
      for (std::size_t i = first; i < last; ++i) {
        files.emplace_back(sources_[i].path, sources_[i].name);
      }
      const std::size_t added = archive_.zip().insertFiles(files, 1);
      for (const auto& file : files) {
        if (&file == files.data() + added) break;
        output_.detail("added " + printable(file.second));
      }
      first += added;
      if (first < last) reportFailure(sources_[first++]);
    }
  }

  // Ends the command unless the failure is that of the file alone.
  void reportFailure(const Source& source) {
    const std::string message = "cannot add " + inQuotes(source.path) + ": ";
    if (FileSystem::TestOpen(source.path.c_str(), FileSystem::kAccessRead) == 0) {
      output_.fail(message + readFailure(source.path));
    } else if (source.name.size() > kLongestEntryName) {
      output_.fail(message + "the name of its entry has more than " +
                   std::to_string(kLongestEntryName) + " bytes");
    } else {
      throw Failure(message + inQuotes(archive_.path()) +
                    " cannot be written, or the file cannot be read to its end");
    }
  }

  Archive& archive_;
  const std::vector<Source>& sources_;
  Output& output_;
};

}  // namespace

void add(const AddRequest& request, Output& output) {
  requireSensibleName(request);
  const NewPassword password = newPassword(request.encryption, output);
  if (request.files[0] == kStandardInput) {
    const std::vector<unsigned char> bytes = readStandardInput();
    Archive archive = openOrCreate(request.zip);
    archive.zip().setEncryption(password.text.c_str(), password.encryption);
    if (archive.zip().insert(bytes, request.name, "", 1) == 0) {
      throw Failure("cannot add " + inQuotes(request.name) + " to " + inQuotes(request.zip));
    }
    return;
  }
  const std::vector<Source> sources = sourcesOf(request, output);
  if (sources.empty()) throw Failure("there is no file to add");
  Archive archive = openOrCreate(request.zip);
  archive.zip().setEncryption(password.text.c_str(), password.encryption);
  Addition(archive, sources, output).run();
}
