// version, xml get.

#include <filesystem/files.h>
#include <filesystem/mfc_text.h>
#include <filesystem/stream.h>
#include <filesystem/xml.h>

#include <cstdio>

#include "commands.h"

namespace {

void requireFile(const std::string& file) {
  constexpr unsigned long kRead = 0x80000000;
  if (FileSystem::TestOpen(file.c_str(), kRead) == 0) {
    throw Failure("cannot read the file '" + file + "'");
  }
}

}  // namespace

void version(const std::string& file) {
  requireFile(file);
  CString text;
  if (FileSystem::FormatVersion(file.c_str(), text) == 0) {
    throw Failure("'" + file + "' has no version resource with a ProductVersion");
  }
  std::printf("%s\n", static_cast<const char*>(text));
}

void xmlGet(const std::string& file, const std::string& tag, const std::string& attribute) {
  requireFile(file);
  const std::string text = FileSystem::readContent(file);
  const std::string value = attribute.empty() ? FileSystem::Xml::xmlContent(text, tag, false)
                                              : FileSystem::Xml::xmlAttribute(text, tag, attribute);
  if (value.empty()) {
    const std::string what = attribute.empty() ? "element" : "attribute '" + attribute + "' of";
    throw Failure("'" + file + "' has no " + what + " '" + tag + "', or it is empty");
  }
  std::printf("%s\n", value.c_str());
}
