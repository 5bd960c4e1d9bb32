// add.

#include <filesystem/files.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "addition.h"
#include "archive.h"
#include "commands.h"
#include "file_tree.h"
#include "password.h"
#include "paths.h"
#include "progress.h"
#include "temporary_directory.h"
#include "terminal.h"
#include "text.h"

namespace {

constexpr const char* kStandardInput = "-";
constexpr std::uint64_t kTooManyBytes = 0xFFFFFFFF;

// Copies standard input to the file. The library inserts a file of any size in little memory.
void spoolStandardInput(const std::string& path) {
  passBytes(stdin);
  const FilePointer file = createPrivateFile(path);
  std::vector<char> block(1 << 20);
  std::uint64_t size = 0;
  while (const std::size_t count = std::fread(block.data(), 1, block.size(), stdin)) {
    size += count;
    if (size >= kTooManyBytes) throw Failure("standard input has 4 GiB or more");
    if (!file || std::fwrite(block.data(), 1, count, file.get()) != count) break;
  }
  if (std::ferror(stdin) != 0) throw Failure("cannot read standard input");
  if (!file || std::fflush(file.get()) != 0 || std::ferror(file.get()) != 0) {
    throw Failure("cannot write standard input to " + inQuotes(path));
  }
}

// Opens the archive, which is created if it does not exist.
Archive openOrCreate(const std::string& zip) {
  ZipArchive().create(zip.c_str(), 0);
  return Archive(zip, FileSystem::kAccessReadWrite);
}

// Returns whether standard input is added.
bool checkNames(const AddRequest& request) {
  const bool hasInput =
      std::find(request.files.begin(), request.files.end(), kStandardInput) != request.files.end();
  const bool isSingle =
      request.files.size() == 1 && FileSystem::FolderExists(request.files[0].c_str()) == 0;
  if (hasInput && (request.name.empty() || !isSingle)) {
    throw UsageError("standard input (-) is added alone and needs --name");
  }
  if (request.name.empty()) return hasInput;
  if (!isSingle) throw UsageError("--name is for a single file");
  if (isSeparator(request.name.back())) {
    throw UsageError("--name " + inQuotes(request.name) + " would be a directory");
  }
  return hasInput;
}

bool canReadToEnd(const std::string& path) {
  std::ifstream file(systemPath(path), std::ios::binary);
  std::vector<char> block(1 << 20);
  while (file.read(block.data(), static_cast<std::streamsize>(block.size()))) continue;
  return file.eof();
}

// Returns why the file itself cannot be added; nothing if another reason is left.
std::optional<std::string> failureOf(const Source& source) {
  if (FileSystem::TestOpen(source.path.c_str(), FileSystem::kAccessRead) == 0) {
    return readFailure(source.path);
  }
  if (source.name.size() > kLongestEntryName) {
    return "the name of its entry has more than " + std::to_string(kLongestEntryName) + " bytes";
  }
  if (fileSize(source.path) >= kTooManyBytes) return "it has 4 GiB or more, which is not supported";
  if (!canReadToEnd(source.path)) return "it cannot be read to its end";
  return std::nullopt;
}

// Adds files in batches, with a commit for each.
class Addition {
 public:
  // With `isOneBatch` all files get one commit.
  Addition(Archive& archive, const std::vector<Source>& sources, bool isOneBatch, Output& output)
      : archive_(archive), sources_(sources), isOneBatch_(isOneBatch), output_(output) {}

  void run() {
    std::uint64_t total = 0;
    for (const Source& source : sources_) total += fileSize(source.path);
    Progress progress(output_, "adding to " + archive_.path(), total);
    for (std::size_t first = 0; first < sources_.size();) {
      constexpr std::uint64_t kBatchBytes = 256 << 20;
      std::uint64_t bytes = 0;
      std::size_t last = first;
      while (last < sources_.size() && (isOneBatch_ || bytes < kBatchBytes)) {
        bytes += fileSize(sources_[last++].path);
      }
      addBatch(first, last);
      progress.advance(bytes);
      first = last;
    }
  }

 private:
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
    const std::optional<std::string> failure = failureOf(source);
    if (!failure) {
      throw Failure(message + inQuotes(archive_.path()) +
                    " cannot be written, or an entry that is kept is damaged");
    }
    output_.fail(message + *failure);
  }

  Archive& archive_;
  const std::vector<Source>& sources_;
  const bool isOneBatch_;
  Output& output_;
};

}  // namespace

void add(const AddRequest& request, Output& output) {
  const bool hasInput = checkNames(request);
  const NewPassword password = newPassword(request.encryption, output);
  std::optional<TemporaryDirectory> temporary;
  std::vector<Source> sources;
  if (hasInput) {
    const std::string path = temporary.emplace().file("input");
    spoolStandardInput(path);
    sources = {{path, request.name}};
  } else {
    sources = sourcesOf(request, output);
  }
  if (sources.empty()) {
    if (output.failures() != 0) return;
    throw Failure("there is no file to add");
  }
  Archive archive = openOrCreate(request.zip);
  // Replacing an entry copies the whole archive, so all files are one batch then.
  const bool isOneBatch = replacesEntry(sources, archive.names());
  archive.zip().setEncryption(password.text.c_str(), password.encryption);
  Addition(archive, sources, isOneBatch, output).run();
}
