// Appends a line to a journal, commits it to the disk, and prints the journal.
// Usage: journal FILE LINE

#include <filesystem/file_stream.h>

#include <cstdio>
#include <vector>

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  using FileSystem::FileStream;
  FileStream journal(argv[1],
                     FileStream::OpenRead | FileStream::OpenWrite | FileStream::OpenAppend);
  if (!journal.is_open()) {
    std::fprintf(stderr, "cannot open %s\n", argv[1]);
    return 1;
  }
  journal << argv[2] << "\n";
  // Writes the line, too.
  if (!journal.seekBOF()) return 1;
  std::vector<char> lines;
  journal.read(lines);
  std::fwrite(lines.data(), 1, lines.size(), stdout);
  return journal.close() ? 0 : 1;
}
