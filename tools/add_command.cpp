// add.

#include <filesystem/files.h>
#include <filesystem/path.h>

#include <algorithm>
#include <cstdio>

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
  for (const std::string& file : filesBelow(base, output)) {
    sources.push_back({base + file, isNamed ? own + '\\' + file : file});
  }
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
  return sources;
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

void addSources(Archive& archive, const std::vector<Source>& sources, Output& output) {
  std::uint64_t total = 0;
  for (const Source& source : sources) {
    total += fileSize(source.path);
  }
  Progress progress(output, "adding to " + archive.path(), total);
  for (const Source& source : sources) {
    if (archive.zip().insert(source.path.c_str(), source.name.c_str(), nullptr, 1) != 0) {
      output.detail("added " + printable(source.name));
      progress.advance(fileSize(source.path));
      continue;
    }
    if (FileSystem::TestOpen(source.path.c_str(), FileSystem::kAccessRead) != 0) {
      throw Failure("cannot add " + inQuotes(source.path) + ": " + inQuotes(archive.path()) +
                    " cannot be written, or the file cannot be read to its end");
    }
    output.fail("cannot add " + inQuotes(source.path) + ": " + readFailure(source.path));
  }
}

}  // namespace

void add(const AddRequest& request, Output& output) {
  requireSensibleName(request);
  const std::string password =
      request.encrypt ? newPassword() : givenPassword(request.password, output);
  if (request.files[0] == kStandardInput) {
    const std::vector<unsigned char> bytes = readStandardInput();
    Archive archive = openOrCreate(request.zip);
    archive.zip().password(password.c_str());
    if (archive.zip().insert(bytes, request.name, "", 1) == 0) {
      throw Failure("cannot add " + inQuotes(request.name) + " to " + inQuotes(request.zip));
    }
    return;
  }
  const std::vector<Source> sources = sourcesOf(request, output);
  if (sources.empty()) throw Failure("there is no file to add");
  Archive archive = openOrCreate(request.zip);
  archive.zip().password(password.c_str());
  addSources(archive, sources, output);
}
