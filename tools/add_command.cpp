// add.

#include <filesystem/archive_change.h>
#include <filesystem/files.h>

#include <algorithm>
#include <cstdio>
#include <utility>
#include <vector>

#include "addition.h"
#include "changes.h"
#include "commands.h"
#include "password.h"
#include "paths.h"
#include "progress.h"
#include "terminal.h"
#include "text.h"
#include "workers.h"

using FileSystem::ArchiveChange;
using FileSystem::Options;
using FileSystem::Reason;
using FileSystem::Report;

namespace {

constexpr const char* kStandardInput = "-";

std::ptrdiff_t readStandardInput(unsigned char* buffer, std::size_t size) {
  const std::size_t count = std::fread(buffer, 1, size, stdin);
  return std::ferror(stdin) != 0 ? -1 : static_cast<std::ptrdiff_t>(count);
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

Report applyChange(ArchiveChange& change, const std::string& zip, Options options,
                   const Output& output) {
  Progress progress(output, "adding to " + zip);
  return change.apply(zip.c_str(), options.setProgress(progress.callback()));
}

// True if it is the last item of the report that failed, and not the archive or an entry that it
// has.
bool isItemAtFault(const Report& report) {
  return !report.items.empty() && report.items.back().reason != Reason::None &&
         report.reason != Reason::Damaged;
}

void addStandardInput(const AddRequest& request, const Options& options, Output& output) {
  passBytes(stdin);
  ArchiveChange change;
  change.insertFrom(readStandardInput, request.name);
  const Report report = applyChange(change, request.zip, options, output);
  if (isItemAtFault(report)) {
    if (report.reason == Reason::ReadFailed) throw Failure("cannot read standard input");
    throw Failure(std::string("cannot add standard input: ") +
                  FileSystem::reasonText(report.reason));
  }
  if (!report) throwFailure(report, request.zip);
  output.detail("added " + printable(request.name));
}

void insert(ArchiveChange& change, const Source& source) {
  switch (source.kind) {
    case Source::Kind::kFile:
      return change.insertFile(source.path, source.name);
    case Source::Kind::kLink:
      return change.insertLink(source.path, source.name);
    case Source::Kind::kDirectory:
      return change.insertFolder(source.path, source.name);
  }
}

// Reports the sources whose items failed, and takes them out.
void dropFailed(std::vector<Source>& sources, const Report& report, Output& output) {
  std::vector<Source> others;
  for (std::size_t i = 0; i < sources.size(); ++i) {
    const bool isFailed = i < report.items.size() && report.items[i].reason != Reason::None;
    if (isFailed) {
      output.fail("cannot add " + inQuotes(sources[i].path) + ": " +
                  FileSystem::reasonText(report.items[i].reason));
    } else {
      others.push_back(std::move(sources[i]));
    }
  }
  sources = std::move(others);
}

// Adds the sources with one commit. Those that fail are reported, and the others are added.
void addFiles(std::vector<Source> sources, const std::string& zip, const Options& options,
              Output& output) {
  while (!sources.empty()) {
    ArchiveChange change;
    for (const Source& source : sources) insert(change, source);
    const Report report = applyChange(change, zip, options, output);
    if (report) {
      for (const Source& source : sources) output.detail("added " + printable(source.name));
      return;
    }
    if (!isItemAtFault(report)) throwFailure(report, zip);
    dropFailed(sources, report, output);
  }
}

}  // namespace

void add(const AddRequest& request, Output& output) {
  const bool hasInput = checkNames(request);
  Options options = optionsOf(newPassword(request.encryption, output), request.compression);
  keep(request.kept, options);
  Workers workers(request.compression.jobs);
  workers.lendTo(options);
  if (hasInput) return addStandardInput(request, options, output);
  std::vector<Source> sources = sourcesOf(request, output);
  if (sources.empty()) {
    if (output.failures() != 0) return;
    throw Failure("there is no file to add");
  }
  addFiles(std::move(sources), request.zip, options, output);
}
