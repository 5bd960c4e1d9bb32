#include <filesystem/files.h>

#include "support/temporary_folder.h"

namespace {

using namespace FileSystem;

std::string data(const std::string& name) {
  return std::string(VESK_TEST_DATA "/version/") + name + ".dll";
}

TEST(VersionResource, Texts) {
  const std::pair<const char*, const char*> cases[] = {
      {"plain", "2.5.1"},      {"plain32", "2.5.1"},    {"special1", "2.5.1A"},
      {"special26", "2.5.1Z"}, {"special27", "2.5.1"},  {"special12x", "2.5.1L"},
      {"special0", "2.5.1"},   {"languages", "größer"},
  };
  for (const auto& [name, expected] : cases) {
    CString version("before");
    EXPECT_EQ(FormatVersion(data(name).c_str(), version), 1) << name;
    EXPECT_STREQ(version, support::text(expected).c_str()) << name;
  }
}

TEST(VersionResource, KeysHaveAnyLetterCase) {
  CString value;
  EXPECT_EQ(VerGetFileInfoString(data("plain").c_str(), "productversion", value), 1);
  EXPECT_STREQ(value, "2.5.1");
}

// A program of the old formats has the first signature too.
TEST(VersionResource, OnlyPortableExecutablesAreRead) {
  const support::TemporaryFolder folder;
  const std::string whole = support::readFile(data("plain"));
  const std::size_t signature = whole.find(std::string("PE\0\0", 4));
  for (const std::size_t at : {std::size_t{0}, signature}) {
    std::string changed = whole;
    changed[at] = 'N';
    support::writeFile(folder.file("changed"), changed);
    CString version;
    EXPECT_EQ(FormatVersion(folder.file("changed").c_str(), version), 0) << at;
  }
}

TEST(VersionResource, WhatIsMissingChangesNothing) {
  const support::TemporaryFolder folder;
  support::writeFile(folder.file("text"), "MZ and no more");
  CString value("before");
  EXPECT_EQ(FormatVersion(data("onlyspecial").c_str(), value), 0);
  EXPECT_EQ(FormatVersion(data("none").c_str(), value), 0);
  EXPECT_EQ(FormatVersion(folder.file("text").c_str(), value), 0);
  EXPECT_EQ(FormatVersion(folder.name().c_str(), value), 0);
  // Only the first block of the translation list is read.
  EXPECT_EQ(VerGetFileInfoString(data("languages").c_str(), "OnlyThere", value), 0);
  EXPECT_STREQ(value, "before");
}

}  // namespace
