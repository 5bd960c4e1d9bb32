// Names: deletion, copies, folders, attributes, searches and temporary names.

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include "platform/conformance.h"

namespace {

TEST_F(Conformance, Names) {
  const struct {
    const char* what;
    BOOL (*call)(const char* path);
    std::vector<std::pair<const char*, DWORD>> cases;  // names and errors
  } calls[] = {
      {"copy to",
       [](const char* path) { return CopyFileA("..\\file", path, FALSE); },
       {{"read-only", ERROR_ACCESS_DENIED},
        {"full", ERROR_ACCESS_DENIED},
        {"none\\copy", ERROR_PATH_NOT_FOUND},
        {"missing\\", ERROR_INVALID_NAME}}},
      {"copy to the new",
       [](const char* path) { return CopyFileA("..\\file", path, TRUE); },
       {{"other", ERROR_FILE_EXISTS}, {"full\\", ERROR_FILE_EXISTS}}},
      {"copy",
       [](const char* path) { return CopyFileA(path, "..\\copy", FALSE); },
       {{"missing", ERROR_FILE_NOT_FOUND}, {"full", ERROR_ACCESS_DENIED}}},
      {"create folder",
       [](const char* path) { return CreateDirectoryA(path, nullptr); },
       {{"full", ERROR_ALREADY_EXISTS},
        {"file", ERROR_ALREADY_EXISTS},
        {"none\\x", ERROR_PATH_NOT_FOUND},
        {"file\\x", ERROR_PATH_NOT_FOUND},
        {"new\\", ERROR_SUCCESS}}},
      {"remove folder",
       [](const char* path) { return RemoveDirectoryA(path); },
       {{"full", ERROR_DIR_NOT_EMPTY},
        {"file", ERROR_DIRECTORY},
        {"missing", ERROR_FILE_NOT_FOUND},
        {"none\\x", ERROR_PATH_NOT_FOUND},
        {"current", ERROR_SHARING_VIOLATION},
        {"new\\", ERROR_SUCCESS}}},
      {"delete",
       [](const char* path) { return DeleteFileA(path); },
       {{"held", ERROR_SHARING_VIOLATION},
        {"read-only", ERROR_ACCESS_DENIED},
        {"empty", ERROR_ACCESS_DENIED},
        {"empty\\", ERROR_ACCESS_DENIED},
        {"missing", ERROR_FILE_NOT_FOUND},
        {"file\\", ERROR_INVALID_NAME},
        {"none\\x", ERROR_PATH_NOT_FOUND},
        {"file", ERROR_SUCCESS}}},
  };
  for (const auto& [what, call, cases] : calls) {
    for (const auto& [name, error] : cases) {
      SetLastError(ERROR_SUCCESS);
      EXPECT_EQ(call(at(name).c_str()) != FALSE, error == ERROR_SUCCESS) << what << ' ' << name;
      EXPECT_TRUE(error == ERROR_SUCCESS || error == GetLastError()) << what << ' ' << name;
    }
  }
}

TEST_F(Conformance, Attributes) {
  struct {
    const char* name;
    DWORD attributes, error;
  } const cases[] = {
      {"file", FILE_ATTRIBUTE_ARCHIVE, 0},
      {"read-only", FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_READONLY, 0},
      {"full", FILE_ATTRIBUTE_DIRECTORY, 0},
      {"full\\", FILE_ATTRIBUTE_DIRECTORY, 0},
      {"missing", INVALID_FILE_ATTRIBUTES, ERROR_FILE_NOT_FOUND},
      {"missing\\file", INVALID_FILE_ATTRIBUTES, ERROR_PATH_NOT_FOUND},
      {"file\\x", INVALID_FILE_ATTRIBUTES, ERROR_PATH_NOT_FOUND},
      {"file\\", INVALID_FILE_ATTRIBUTES, ERROR_PATH_NOT_FOUND},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(GetFileAttributesA(at(c.name).c_str()), c.attributes) << c.name;
    EXPECT_TRUE(c.error == ERROR_SUCCESS || c.error == GetLastError()) << c.name;
  }
}

TEST_F(Conformance, Searches) {
  for (const char* name : {"a.tmp", "b.TMP", "ab", "x.tm"}) {
    write(std::string("s/") + name, "");
  }
  using Names = std::vector<std::string>;
  const std::tuple<const char*, Names, DWORD> cases[] = {
      {"s\\*.*", {".", "..", "a.tmp", "ab", "b.TMP", "x.tm"}, ERROR_NO_MORE_FILES},
      {"s\\*.tmp", {"a.tmp", "b.TMP"}, ERROR_NO_MORE_FILES},
      {"s\\ab", {"ab"}, ERROR_NO_MORE_FILES},
      {"s\\nothing*", {}, ERROR_FILE_NOT_FOUND},
      {"missing", {}, ERROR_FILE_NOT_FOUND},
      {"none\\*", {}, ERROR_PATH_NOT_FOUND},
  };
  for (const auto& [pattern, names, error] : cases) {
    Names found;
    WIN32_FIND_DATAA data{};
    SetLastError(ERROR_SUCCESS);
    const platform::SearchHandle search(FindFirstFileA(at(pattern).c_str(), &data));
    for (bool isFound = static_cast<bool>(search); isFound;
         isFound = FindNextFileA(search.get(), &data) != FALSE) {
      found.emplace_back(data.cFileName);
    }
    EXPECT_EQ(GetLastError(), error) << pattern;
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, names) << pattern;
  }
}

TEST_F(Conformance, PathSearchPointsAtTheName) {
  std::string withBackslashes = at("file");
  std::replace(withBackslashes.begin(), withBackslashes.end(), '/', '\\');
  for (const std::string& path : {at("file"), withBackslashes}) {
    char found[MAX_PATH];
    char* name = nullptr;
    EXPECT_EQ(SearchPathA(nullptr, path.c_str(), nullptr, MAX_PATH, found, &name), path.size());
    EXPECT_EQ(found, path);
    EXPECT_STREQ(name, "file");
  }
}

TEST_F(Conformance, PathSearchNeedsTheNameOfAFile) {
  char found[MAX_PATH];
  EXPECT_EQ(SearchPathA(nullptr, at("missing").c_str(), nullptr, MAX_PATH, found, nullptr), 0U);
  for (const char* const name : {"", static_cast<const char*>(nullptr)}) {
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(SearchPathA(nullptr, name, nullptr, MAX_PATH, found, nullptr), 0U);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  }
}

TEST_F(Conformance, TemporaryNames) {
  const std::string folder = folder_.name();
  char name[MAX_PATH];
  std::set<std::string> names;
  for (int i = 0; i < 300; ++i) {
    ASSERT_NE(GetTempFileNameA(folder.c_str(), "pref", 0, name), 0U);
    EXPECT_TRUE(std::string(name).starts_with(folder + "\\pre")) << name;
    EXPECT_EQ(lstrcmpiA(std::string(name).substr(std::string(name).size() - 4).c_str(), ".tmp"), 0);
    EXPECT_TRUE(names.insert(name).second);
    EXPECT_EQ(GetFileAttributesA(name), FILE_ATTRIBUTE_ARCHIVE);
  }
}

}  // namespace
