// Fuzzes the path functions. The first line of the input and the rest are two paths.

#include <filesystem/path.h>

#include "workplace.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace FileSystem;
  std::string_view rest = fuzz::textOf(data, size);
  const std::string first = fuzz::takeLine(rest);
  const std::string path(rest);

  fuzz::require(extractDrive(path).size() <= 2, "a drive is two bytes");
  fuzz::require(extractPath(path).size() <= 2 + 255, "a directory has its limit");
  fuzz::require(extractName(path).size() <= 255, "a name has its limit");
  fuzz::require(extractExtension(path).size() <= 255, "an extension has its limit");
  fuzz::require(extractFilename(path).size() <= std::size_t{2} * 255, "a file name has its limit");
  fuzz::require(replaceExtension(path, first).size() <= 260, "a path has its limit");
  fuzz::require(pathEqual(path, path), "a path equals itself");
  fuzz::require(pathEqual(first, path) == pathEqual(path, first), "equality is symmetric");
  const std::string below = subPath(first, path);
  fuzz::require(path.ends_with(below), "a subpath ends the path");
  fuzz::require(path.empty() || !below.empty(), "no subpath is empty");
  const std::string clean = eraseInvalidCharacter(path);
  fuzz::require(eraseInvalidCharacter(clean) == clean, "a clean name does not change");
  ParentDirectory(path.c_str());
  CString root;
  PathRoot(path.c_str(), root);
  return 0;
}
