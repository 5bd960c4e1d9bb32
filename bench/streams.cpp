// Whole files and many small writes.

#include <filesystem/file_stream.h>
#include <filesystem/stream.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>

#include "benchmarks.h"

namespace {

bench::Cost commits;  // so far

}  // namespace

// Replaces the C library's function, to measure commits separately.
extern "C" __attribute__((visibility("default"))) int fdatasync(int descriptor) {
  long result = 0;
  const bench::Cost cost = bench::timed([&] { result = syscall(SYS_fdatasync, descriptor); });
  commits = {commits.wall + cost.wall, commits.processor + cost.processor};
  return static_cast<int>(result);
}

namespace bench {
namespace {

constexpr std::size_t kGigabyte = 1'000'000'000;
constexpr std::size_t kBuffer = 0x200000;

struct WriteCost {
  Cost writing;
  Cost committing;
};

// Measures `write(stream)` on a new file, and separately the commits in it.
template <typename Write>
WriteCost writingTo(const std::string& path, Write write) {
  const Cost before = commits;
  const Cost whole = timed([&] {
    FileSystem::FileStream stream;
    require(stream.open(path.c_str(),
                        FileSystem::FileStream::OpenWrite | FileSystem::FileStream::OpenTruncate),
            "FileStream::open");
    write(stream);
    stream.close();
  });
  const Cost committing = commits - before;
  return {whole - committing, committing};
}

Operation writing(const Workspace& workspace) {
  static const std::string text(100, 't');
  const auto commitSeconds = std::make_shared<std::vector<double>>();
  const auto count = [&workspace](int eighths) {
    return workspace.scaled(kGigabyte) / text.size() / 8 * static_cast<std::size_t>(eighths);
  };
  return {.name = "FileStream::write, 1 GB of 100 bytes",
          .target = 0.8,
          .ours =
              [=, &workspace](int eighths) {
                const WriteCost cost = writingTo(workspace.fresh("written"), [&](auto& stream) {
                  for (std::size_t i = count(eighths); i > 0; --i) stream.write(text);
                });
                if (eighths == 8) commitSeconds->push_back(cost.committing.wall);
                return cost.writing;
              },
          .peers = {{"std::ofstream",
                     [=, &workspace] {
                       const std::string path = workspace.fresh("written");
                       static std::vector<char> buffer(kBuffer);
                       return timed([&] {
                         std::ofstream stream;
                         stream.rdbuf()->pubsetbuf(buffer.data(), kBuffer);
                         stream.open(path, std::ios::binary);
                         for (std::size_t i = count(8); i > 0; --i) {
                           stream.write(text.data(), static_cast<std::streamsize>(text.size()));
                         }
                       });
                     }}},
          .note =
              [=] {
                char note[64];
                std::snprintf(note, sizeof(note), "commits apart: %.3f s", median(*commitSeconds));
                return std::string(note);
              }};
}

Operation writingNumbers(const Workspace& workspace) {
  const auto count = [&workspace](int eighths) {
    return static_cast<long>(workspace.scaled(kGigabyte) / 1000) * eighths;
  };
  return {.name = "FileStream << long, 8,000,000 numbers",
          .target = 1.0,
          .ours =
              [=, &workspace](int eighths) {
                return writingTo(workspace.fresh("numbers"),
                                 [&](auto& stream) {
                                   for (long i = count(eighths); i > 0; --i) stream << i;
                                 })
                    .writing;
              },
          .peers = {{"std::ofstream",
                     [=, &workspace] {
                       const std::string path = workspace.fresh("numbers");
                       return timed([&] {
                         std::ofstream stream(path, std::ios::binary);
                         for (long i = count(8); i > 0; --i) stream << i;
                       });
                     }}},
          .note = {}};
}

// Returns the path of a file of a number of eighths of a gigabyte, which is created once.
std::string contentFile(const Workspace& workspace, int eighths) {
  const std::size_t size = workspace.scaled(kGigabyte) / 8 * static_cast<std::size_t>(eighths);
  std::string path = workspace.path("content" + std::to_string(eighths));
  if (std::filesystem::exists(path)) return path;
  std::ofstream file(path, std::ios::binary);
  const std::string block(1 << 20, 'c');
  for (std::size_t written = 0; written < size;) {
    const std::size_t count = std::min(block.size(), size - written);
    file.write(block.data(), static_cast<std::streamsize>(count));
    written += count;
  }
  return path;
}

Operation reading(const Workspace& workspace) {
  return {.name = "readContent, 1 GB",
          .target = 1.0,
          .ours =
              [&workspace](int eighths) {
                const std::string path = contentFile(workspace, eighths);
                return timed([&] {
                  const std::string content = FileSystem::readContent(path);
                  require(!content.empty(), "readContent");
                });
              },
          .peers = {{"std::ifstream::read",
                     [&workspace] {
                       const std::string path = contentFile(workspace, 8);
                       return timed([&] {
                         std::ifstream stream(path, std::ios::binary | std::ios::ate);
                         std::string content(static_cast<std::size_t>(stream.tellg()), '\0');
                         stream.seekg(0);
                         stream.read(content.data(), static_cast<std::streamsize>(content.size()));
                         require(stream.good(), "std::ifstream::read");
                       });
                     }}},
          .note = {}};
}

}  // namespace

std::vector<Operation> streamOperations(const Workspace& workspace) {
  return {writing(workspace), writingNumbers(workspace), reading(workspace)};
}

}  // namespace bench
