#include <filesystem/archive.h>

#include <utility>

namespace FileSystem {

const char* methodName(std::uint16_t method) {
  constexpr std::pair<std::uint16_t, const char*> kNames[] = {
      {0, "stored"}, {1, "shrink"}, {6, "implode"},    {8, "deflate"}, {9, "Deflate64"},
      {12, "bzip2"}, {14, "LZMA"},  {93, "Zstandard"}, {95, "XZ"},     {98, "PPMd"}};
  for (const auto& [number, name] : kNames) {
    if (number == method) return name;
  }
  return "";
}

}  // namespace FileSystem
