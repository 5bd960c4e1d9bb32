// version, xml get.

#include <filesystem/files.h>
#include <filesystem/mfc_text.h>
#include <filesystem/stream.h>
#include <filesystem/xml.h>

#include <cstdio>

#include "commands.h"
#include "text.h"

namespace {

void requireFile(const std::string& file) {
  if (FileSystem::TestOpen(file.c_str(), FileSystem::kAccessRead) == 0) {
    throw Failure("cannot read the file " + inQuotes(file));
  }
}

}  // namespace

void version(const std::string& file) {
  requireFile(file);
  CString text;
  if (FileSystem::FormatVersion(file.c_str(), text) == 0) {
    throw Failure(inQuotes(file) + " has no version resource with a ProductVersion");
  }
  std::printf("%s\n", static_cast<const char*>(text));
}

void xmlGet(const std::string& file, const std::string& tag, const std::string& attribute) {
  requireFile(file);
  const std::string text = FileSystem::readContent(file);
  const std::string value = attribute.empty() ? FileSystem::Xml::xmlContent(text, tag, false)
                                              : FileSystem::Xml::xmlAttribute(text, tag, attribute);
  if (value.empty()) {
    const std::string item = attribute.empty() ? "" : "attribute " + inQuotes(attribute) + " of ";
    throw Failure(inQuotes(file) + " has no " + item + "element " + inQuotes(tag) +
                  ", or it is empty");
  }
  std::printf("%s\n", value.c_str());
}
