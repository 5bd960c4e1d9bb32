// Attributes, folders, deletion, temporary names and the search path.

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "platform/unique_handle.h"
#include "platform/win32.h"
#include "support/temporary_folder.h"

namespace {

class Names : public testing::Test {
 protected:
  void SetUp() override {
    support::writeFile(folder_.file("file"), "12345");
    support::writeFile(folder_.file(".hidden"), "");
    support::writeFile(folder_.file("full/inside"), "");
    std::filesystem::create_directory(folder_.file("empty"));
  }
  std::string at(const std::string& name) const { return folder_.text() + name; }

  support::TemporaryFolder folder_;
};

TEST_F(Names, Attributes) {
  struct {
    const char* name;
    DWORD attributes, error;
  } const cases[] = {
      {"file", FILE_ATTRIBUTE_ARCHIVE, 0},
      {".hidden",
       FILE_ATTRIBUTE_ARCHIVE | (support::kPlatform.dotHides ? FILE_ATTRIBUTE_HIDDEN : 0U), 0},
      {"full", FILE_ATTRIBUTE_DIRECTORY, 0},
      {"full\\", FILE_ATTRIBUTE_DIRECTORY, 0},
      {"full\\.", FILE_ATTRIBUTE_DIRECTORY, 0},
      {"missing", INVALID_FILE_ATTRIBUTES, ERROR_FILE_NOT_FOUND},
      {"missing\\file", INVALID_FILE_ATTRIBUTES, ERROR_PATH_NOT_FOUND},
      {"file\\x", INVALID_FILE_ATTRIBUTES, ERROR_PATH_NOT_FOUND},
      {"file\\", INVALID_FILE_ATTRIBUTES, ERROR_PATH_NOT_FOUND},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(GetFileAttributesA(at(c.name).c_str()), c.attributes) << c.name;
    if (c.error != 0) {
      EXPECT_EQ(GetLastError(), c.error) << c.name;
    }
  }
  const std::string file = at("file");
  ASSERT_TRUE(SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_READONLY));
  EXPECT_EQ(GetFileAttributesA(file.c_str()), FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_READONLY);
  ASSERT_TRUE(SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_NORMAL));
  EXPECT_EQ(GetFileAttributesA(file.c_str()), FILE_ATTRIBUTE_ARCHIVE);

  support::setWriteTime(folder_.file("file"), 1, 700);
  WIN32_FILE_ATTRIBUTE_DATA data{};
  ASSERT_TRUE(GetFileAttributesExA(file.c_str(), GetFileExInfoStandard, &data));
  EXPECT_EQ(data.nFileSizeLow, 5U);
  const ULONGLONG write =
      ULONGLONG{data.ftLastWriteTime.dwHighDateTime} << 32 | data.ftLastWriteTime.dwLowDateTime;
  EXPECT_EQ(write, 116444736010000007U);
}

TEST_F(Names, TemporaryNames) {
  char name[MAX_PATH];
  std::set<std::string> names;
  for (int i = 0; i < 300; ++i) {
    const UINT number = GetTempFileNameA(folder_.name().c_str(), "pref", 0, name);
    ASSERT_NE(number, 0U);
    EXPECT_TRUE(std::string(name).starts_with(folder_.name() + "\\pre")) << name;
    EXPECT_EQ(lstrcmpiA(std::string(name).substr(std::string(name).size() - 4).c_str(), ".tmp"), 0);
    EXPECT_TRUE(names.insert(name).second);
    EXPECT_EQ(GetFileAttributesA(name), FILE_ATTRIBUTE_ARCHIVE);
  }
  EXPECT_EQ(GetTempFileNameA((folder_.name() + "/").c_str(), "~", 0xABC12345, name) & 0xFFFF,
            0x2345U);
  EXPECT_EQ(lstrcmpiA(name, (folder_.name() + "/\\~2345.TMP").c_str()), 0) << name;
  EXPECT_EQ(GetFileAttributesA(name), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetTempFileNameA(at("missing").c_str(), "~", 1, name), 0U);
  EXPECT_EQ(GetLastError(), ERROR_DIRECTORY);
  EXPECT_EQ(GetTempFileNameA(at("file").c_str(), "~", 0, name), 0U);
  const std::string dots = folder_.name() + std::string(246, '/');
  EXPECT_EQ(GetTempFileNameA(dots.c_str(), "~", 1, name), 0U);
  EXPECT_NE(GetTempFileNameA(dots.substr(0, 246).c_str(), "abc", 0xFFFF, name), 0U);
}

TEST_F(Names, SearchPath) {
  char found[MAX_PATH];
  char* part = nullptr;
  const char* const program = support::kPlatform.program;
  EXPECT_GT(SearchPathA(nullptr, program, nullptr, sizeof(found), found, &part), 2U);
  EXPECT_STREQ(part, program);
  const std::string list = "C:\\nowhere;" + folder_.name();
  EXPECT_EQ(SearchPathA(list.c_str(), "file", nullptr, sizeof(found), found, &part),
            at("file").size());
  EXPECT_EQ(found, at("file"));
  EXPECT_EQ(SearchPathA(list.c_str(), "file", nullptr, 4, found, &part), at("file").size() + 1);
  EXPECT_EQ(SearchPathA(list.c_str(), "full", nullptr, sizeof(found), found, &part),
            at("full").size());
  EXPECT_EQ(SearchPathA(list.c_str(), "fil", ".x", sizeof(found), found, &part), 0U);
}

}  // namespace
