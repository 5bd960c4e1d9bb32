// Reads version texts of any file.

#include <filesystem/files.h>

#include "workplace.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string path = fuzz::Workplace::instance().write("a.dll", data, size);
  CString version;
  const int formatted = FileSystem::FormatVersion(path.c_str(), version);
  for (const char* key : {"ProductVersion", "SpecialBuild", "FileDescription", "", "\\", "a\\b"}) {
    CString value("none");
    const int found = FileSystem::VerGetFileInfoString(path.c_str(), key, value);
    fuzz::require(found == 1 || std::string(value) == "none", "a failure sets no text");
    if (std::string(key) == "ProductVersion") {
      fuzz::require(found == formatted, "a version is made of the product version");
    }
  }
  return 0;
}
