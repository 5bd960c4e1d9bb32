#include "library/enumeration.h"

#include <stdexcept>

namespace {

using namespace FileSystem;

Names namesOf(const std::vector<FILE_INFORMATION>& records) {
  Names names;
  for (const FILE_INFORMATION& record : records) names.emplace_back(record.cFileName);
  return names;
}

TEST_F(Enumeration, GroupsOfExtensions) {
  const char* const end = nullptr;
  make({"x.aaa", "x.bbb", "y.aaa", "a.b.aaa", "a.b.bbb", "Z.AAA", "Z.bBb", ".aaa", "long.aaab"});
  std::filesystem::create_directory(folder_.file("sub.aaa"));
  Names names{"before"};
  EXPECT_EQ(EnumFiles(names, path_, "*", ".aaa", ".bbb", end), 3U);
  EXPECT_EQ(sorted(names), (Names{"Z", "a.b", "before", "x"}));
  names.clear();
  make({"x.ccc", "y.ccc"});
  EXPECT_EQ(EnumFiles(names, path_, "*", ".aaa", ".bbb", ".ccc", end), 1U);
  EXPECT_EQ(names, Names{"x"});
  names.clear();
  EXPECT_EQ(EnumFiles(names, path_, "*", ".aaa", end), 5U);
  EXPECT_EQ(sorted(names), (Names{"", "Z", "a.b", "x", "y"}));
  CStringArray array;
  EXPECT_EQ(EnumFiles(array, path_, "x*", ".aaa", ".bbb", end), 1U);
  EXPECT_STREQ(array.GetAt(0), "x");
  EXPECT_EQ(EnumFiles(names, path_, "*", end), 0U);
  EXPECT_EQ(EnumFiles(names, path_, ""), 0U);
  EXPECT_EQ(EnumFiles(names, folder_.file("missing\\").c_str(), "*", ".aaa", end), 0U);
  // An extension ignores letter case, a base name does not.
  make({"q.aaa", "Q.bbB", "Q.aaA"});
  write(support::text("u.\xC3\x84"), "");
  names.clear();
  EXPECT_EQ(EnumFiles(names, path_, "q*", ".aaa", ".bbb", end), 1U);
  EXPECT_EQ(EnumFiles(names, path_, "*", support::text(".\xC3\xA4").c_str(), end), 1U);
  EXPECT_EQ(names, (Names{support::fileSystem().exactCase ? "Q" : "q", "u"}));

  // A file without sharing does not count for its group.
  const platform::FileHandle owner = support::openFile(folder_.file("x.bbb"));
  names.clear();
  EXPECT_EQ(EnumFiles(names, path_, "x", ".aaa", ".bbb", end), 0U);
  // The plain form lists it, but no folders.
  EXPECT_EQ(EnumFiles(names, path_, "x*"), 3U);
  EXPECT_EQ(EnumFiles(names, path_, "s*"), 0U);
}

TEST_F(Enumeration, FilesOfATree) {
  make({"top", "a/one.txt", "a/b/two", "c/three"});
  Names paths;
  EXPECT_EQ(EnumFilesWithPath(paths, path_, "*.*", true), 4U);
  EXPECT_EQ(paths.front(), text_ + "top");
  EXPECT_EQ(below(paths), (Names{"a\\b\\two", "a\\one.txt", "c\\three", "top"}));
  Names unended;
  EnumFilesWithPath(unended, folder_.name().c_str(), "*.*", true);
  EXPECT_EQ(unended, paths);
  unended.clear();
  EXPECT_EQ(EnumFilesWithPath(unended, (folder_.name() + "/").c_str(), "t*", false), 1U);
  EXPECT_EQ(unended, Names{folder_.name() + "/\\top"});
  EXPECT_EQ(EnumFilesWithPath(paths, path_, "t*", true), 3U);

  const platform::FileHandle owner = support::openFile(folder_.file("top"));
  std::vector<FILE_INFORMATION> records;
  EXPECT_EQ(EnumFilesWithPath(records, path_, "*"), 0U);
  EXPECT_EQ(EnumFilesWithPath(records, (text_ + "a").c_str(), "*"), 1U);
  EXPECT_STREQ(records[0].cFileName, "one.txt");
  EXPECT_EQ(records[0].dwFileAttributes, FILE_ATTRIBUTE_ARCHIVE);
  EXPECT_STREQ(records[0].cAlternateFileName, "");
  if (!support::fileSystem().largeFiles) return;
  std::filesystem::resize_file(folder_.file("a/one.txt"), 5ULL << 30 | 7);
  EXPECT_EQ(EnumFilesWithPath(records, (text_ + "a").c_str(), "*"), 1U);
  EXPECT_EQ(records[1].nFileSizeHigh, 1U);
  EXPECT_EQ(records[1].nFileSizeLow, (1U << 30) + 7);
}

TEST_F(Enumeration, FiltersOfFiles) {
  make({"a", "b", "held"});
  const platform::FileHandle owner = support::openFile(folder_.file("held"));
  std::vector<FILE_INFORMATION> records(1);
  Names asked;
  const auto isB = [&](const char* path) {
    asked.emplace_back(path);
    return asked.back().ends_with("\\b") ? 1 : 0;
  };
  EXPECT_EQ(EnumFilesWithPathEx(records, folder_.name().c_str(), "*", isB), 1U);
  EXPECT_EQ(below(asked), (Names{"a", "b"}));
  EXPECT_EQ(namesOf(records), (Names{"", "b"}));
  const boost::function1<int, const char*> none;
  EXPECT_THROW(EnumFilesWithPathEx(records, path_, "*", none), boost::bad_function_call);
  EXPECT_EQ(EnumFilesWithPathEx(records, path_, "nothing", none), 0U);
}

TEST_F(Enumeration, Folders) {
  make({"a/b/f", "c/f", ".hidden/f"});
  std::vector<FILE_INFORMATION> records;
  EXPECT_EQ(EnumFolders(records, path_, 1), 4U);
  EXPECT_NE(records[0].ftLastWriteTime.dwHighDateTime, 0U);
  Names names = namesOf(records);
  EXPECT_LT(std::find(names.begin(), names.end(), "a"),
            std::find(names.begin(), names.end(), "a\\b"));
  EXPECT_EQ(sorted(names), (Names{".hidden", "a", "a\\b", "c"}));
  EXPECT_EQ(EnumFolders(records, path_, 0), 3U);
  EXPECT_EQ(EnumFolders(records, path_, -1), 4U);
  Names paths{text_};
  EXPECT_EQ(EnumFolders(paths, folder_.name().c_str(), -1), 4U);
  EXPECT_EQ(below(paths), (Names{"", ".hidden\\", "a\\", "a\\b\\", "c\\"}));

  Names asked;
  const auto notA = [&](const char* path) {
    asked.emplace_back(path);
    return asked.back().ends_with("\\a") ? 0 : 1;
  };
  EXPECT_EQ(EnumFoldersEx(records, path_, notA, -1), 2U);
  EXPECT_EQ(below(asked), (Names{".hidden", "a", "c"}));

  // If the filter throws, the records stay except those below the current top-level folder.
  make({"tree/p/x/y/f", "tree/q/x/y/f"});
  const std::string tree = folder_.file("tree\\");
  constexpr std::size_t kLeft[] = {0, 1, 1, 3, 4, 4};
  for (std::size_t failing = 0; failing < std::size(kLeft); ++failing) {
    std::size_t calls = 0;
    const auto throwing = [&](const char*) {
      return calls++ == failing ? throw std::runtime_error("filter") : 1;
    };
    records.clear();
    EXPECT_THROW(EnumFoldersEx(records, tree.c_str(), throwing, -1), std::runtime_error);
    EXPECT_EQ(records.size(), kLeft[failing]) << failing;
  }
}

}  // namespace
