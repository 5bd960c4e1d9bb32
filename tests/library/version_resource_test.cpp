#include <filesystem/files.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "platform/win32.h"
#include "support/temporary_folder.h"

namespace {

using namespace FileSystem;

std::string data(const std::string& name) {
  return std::string(VESK_TEST_DATA "/version/") + name + ".dll";
}

TEST(VersionResource, Texts) {
  struct {
    const char *name, *version;
  } const cases[] = {
      {"plain", "2.5.1"},      {"plain32", "2.5.1"},    {"special1", "2.5.1A"},
      {"special26", "2.5.1Z"}, {"special27", "2.5.1"},  {"special12x", "2.5.1L"},
      {"special0", "2.5.1"},   {"languages", "größer"},
  };
  for (const auto& c : cases) {
    CString version("before");
    EXPECT_EQ(FormatVersion(data(c.name).c_str(), version), 1) << c.name;
    EXPECT_STREQ(version, support::text(c.version).c_str()) << c.name;
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

TEST(VersionResource, Queries) {
  const std::string path = data("special1");
  const DWORD size = GetFileVersionInfoSizeA(path.c_str(), nullptr);
  ASSERT_GT(size, 0U);
  std::string block(size, '\0');
  ASSERT_TRUE(GetFileVersionInfoA(path.c_str(), 0, size, block.data()));
  const std::string texts = "\\StringFileInfo\\040904B0";
  struct {
    std::string path;
    bool found;
    UINT length;
  } const cases[] = {
      {"\\", true, 52},
      {"", true, 52},
      {texts, true, 0},
      {texts + "\\\\ProductVersion", true, 6},
      {texts + "\\productversion\\", true, 6},
      {texts + "\\none", false, 0},
  };
  for (const auto& c : cases) {
    void* value = nullptr;
    UINT length = 99;
    EXPECT_EQ(VerQueryValueA(block.data(), c.path.c_str(), &value, &length) != FALSE, c.found)
        << c.path;
    EXPECT_EQ(length, c.length) << c.path;
  }
}

// Libraries of Wine, where it is installed. The text follows its key in the file.
TEST(VersionResource, RealLibraries) {
  const std::filesystem::path folder = "/usr/lib/x86_64-linux-gnu/wine/x86_64-windows";
  if (!std::filesystem::exists(folder)) GTEST_SKIP() << "libwine is not installed";
  const auto wide = [](const std::string& text) {
    std::string bytes;
    for (const char c : text) bytes.append(1, c).append(1, '\0');
    return bytes;
  };
  constexpr int kEnough = 30;
  int compared = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    const std::string path = support::textOf(entry.path());
    const std::string bytes = support::readFile(path);
    if (bytes.find(wide("ProductVersion")) == std::string::npos) continue;
    if (bytes.find(wide("SpecialBuild")) != std::string::npos) continue;
    CString version;
    EXPECT_EQ(FormatVersion(path.c_str(), version), 1) << path;
    const std::string text = std::string("ProductVersion") + '\0' + version.GetString() + '\0';
    EXPECT_NE(bytes.find(wide(text)), std::string::npos) << path << ": " << version.GetString();
    if (++compared == kEnough) break;
  }
  EXPECT_GT(compared, 10);
}

}  // namespace
