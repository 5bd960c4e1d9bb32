// Whether a file starts like an XML document.

#include <filesystem/file_stream.h>
#include <filesystem/files.h>
#include <filesystem/xml.h>

#include <string_view>
#include <vector>

namespace FileSystem {

int isFileXml(const char* path) {
  constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";
  constexpr std::string_view kDeclaration = "<?xml";
  if (FileExists(path) == 0) return 0;
  FileStream stream(path, FileStream::OpenRead);
  std::size_t matched = 0;
  std::vector<char> block(512);
  while (stream.is_open() && stream.read(block)) {
    for (const char c : block) {
      if (matched == 0 && kWhiteSpace.find(c) != std::string_view::npos) continue;
      if (c != kDeclaration[matched]) return 0;
      if (++matched == kDeclaration.size()) return 1;
    }
    block.resize(512);
  }
  return 0;
}

}  // namespace FileSystem
