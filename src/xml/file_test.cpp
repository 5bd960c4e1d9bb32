#include <filesystem/file_stream.h>
#include <filesystem/files.h>
#include <filesystem/xml.h>

#include <locale>
#include <string_view>
#include <vector>

namespace FileSystem {

int isFileXml(const char* path) {
  constexpr std::string_view kDeclaration = "<?xml";
  constexpr std::size_t kBlock = 512;
  if (FileExists(path) == 0) return 0;
  const std::locale locale;
  const auto& characters = std::use_facet<std::ctype<char>>(locale);
  FileStream stream(path, FileStream::OpenRead);
  std::size_t matched = 0;
  std::vector<char> block(kBlock);
  while (stream.read(block)) {
    for (const char c : block) {
      const bool isSpace = characters.is(std::ctype_base::space, c);
      if (isSpace && matched == 0) continue;
      // A space ends the word.
      if (isSpace || c != kDeclaration[matched]) return 0;
      if (++matched == kDeclaration.size()) return 1;
    }
    block.resize(kBlock);
  }
  return 0;
}

}  // namespace FileSystem
