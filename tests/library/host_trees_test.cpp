// Trees that a host copies and deletes, with reasons and progress.

#include <algorithm>
#include <set>

#include "library/host_trees.h"

namespace {

using namespace FileSystem;

TEST_F(HostTrees, ListingSelectsFilesAndNamesTheOthers) {
  write("in/b.txt", "");
  write("in/sub/a.TXT", "");
  write("in/sub/deep/c.log", "");
  write("in/used.txt", "");
  const platform::FileHandle used = support::openFile(path("in/used.txt"), GENERIC_READ, 0);
  const Options filesOnly = Options().setFolders(false);
  const auto list = [&](const char* pattern, const Options& options) {
    return listTree(path("in").c_str(), pattern, options);
  };
  const Reasons text{
      {"b.txt", Reason::None}, {"sub\\a.TXT", Reason::None}, {"used.txt", Reason::InUse}};
  EXPECT_EQ(reasonsOf(list("*.txt", filesOnly)), text);
  Reasons all = text;
  all["sub\\deep\\c.log"] = Reason::None;
  EXPECT_EQ(reasonsOf(list("*", filesOnly)), all);
  EXPECT_EQ(reasonsOf(list("*.log", {})), (Reasons{{"sub", Reason::None},
                                                   {"sub\\deep", Reason::None},
                                                   {"sub\\deep\\c.log", Reason::None}}));
  EXPECT_EQ(listTree(path("none").c_str(), "*").reason, Reason::Missing);
  EXPECT_EQ(listTree(path("in/b.txt").c_str(), "*").reason, Reason::NotAFolder);
  EXPECT_EQ(listTree("", "*").reason, Reason::Missing);
}

TEST_F(HostTrees, CopySaysWhatBecameOfEachFile) {
  write("in/new", "n");
  write("in/sub/replaced", "n");
  write("in/held", "n");
  write("in/in-use", "n");
  write("in/read-only", "n");
  write("in/folder", "n");
  write("in/file/below", "n");
  for (const char* name : {"sub/replaced", "in-use", "read-only", "folder/x", "file"}) {
    write(std::string("out/") + name, "o");
  }
  support::makeReadOnly(path("out/read-only"));
  const platform::FileHandle held = support::openFile(path("in/held"));
  const platform::FileHandle inUse = support::openFile(path("out/in-use"), GENERIC_READ);
  const Report report = copy();
  EXPECT_EQ(report.reason, Reason::None);
  EXPECT_FALSE(report);
  EXPECT_EQ(reasonsOf(report), (Reasons{{"new", Reason::None},
                                        {"sub\\replaced", Reason::None},
                                        {"held", Reason::InUse},
                                        {"in-use", Reason::InUse},
                                        {"read-only", Reason::NoPermission},
                                        {"folder", Reason::IsAFolder},
                                        {"file", Reason::NotAFolder},
                                        {"file\\below", Reason::NotAFolder}}));
  EXPECT_EQ(read("out/sub/replaced"), "n");
  EXPECT_EQ(read("out/read-only"), "o");
  for (const ItemResult& item : report.items) EXPECT_EQ(item.isFolder, item.name == "file");
}

TEST_F(HostTrees, CopyKeepsExistingFilesOnRequest) {
  write("in/new", "n");
  write("in/old", "n");
  write("out/old", "o");
  const Report report = copy(Options().setExisting(ExistingFiles::Keep));
  EXPECT_EQ(reasonsOf(report), (Reasons{{"new", Reason::None}, {"old", Reason::Exists}}));
  EXPECT_EQ(read("out/old"), "o");
}

TEST_F(HostTrees, CopyIntoItselfHarmsNoFile) {
  write("in/a", "a");
  const Report report = copyTree(path("in").c_str(), path("in").c_str());
  EXPECT_EQ(reasonsOf(report), (Reasons{{"a", Reason::SameFile}}));
  EXPECT_EQ(read("in/a"), "a");
}

// A copy that fails.
struct Failure {
  std::string source;
  std::string target;
  Reason reason;
};

TEST_F(HostTrees, CopySaysWhyAFolderCannotBeUsed) {
  write("in/a", "a");
  const std::string in = path("in");
  const std::string longName(300, 'n');
  const Failure cases[] = {
      {path("none"), path("out"), Reason::Missing}, {path("in/a"), path("out"), Reason::NotAFolder},
      {in, path("in/a"), Reason::NotAFolder},       {in, path("in/a/below"), Reason::NotAFolder},
      {in, path(longName), Reason::PathTooLong},
  };
  for (const auto& c : cases) {
    const Report report = copyTree(c.source.c_str(), c.target.c_str());
    EXPECT_EQ(report.reason, c.reason) << c.source << ' ' << c.target;
    EXPECT_TRUE(report.items.empty());
  }
  EXPECT_FALSE(exists("out"));
}

TEST_F(HostTrees, CopyOfAFileSaysWhyItFails) {
  write("in/a", "a");
  write("file", "f");
  const platform::FileHandle held = support::openFile(path("file"));
  const Failure cases[] = {
      {path("in/none"), path("out"), Reason::Missing},
      {"", path("out"), Reason::Missing},
      {path("in/a"), "", Reason::Missing},
      {path("in"), path("out"), Reason::IsAFolder},
      {path("in/a"), path(std::string(300, 'n')), Reason::PathTooLong},
      {path("in/a"), path("file"), Reason::NotAFolder},
      {path("in/a"), path("in"), Reason::SameFile},
      {path("file"), path("out"), Reason::InUse},
  };
  for (const auto& c : cases) {
    const Report report = copyFile(c.source.c_str(), c.target.c_str());
    EXPECT_EQ(report.items.empty() ? report.reason : report.items[0].reason, c.reason)
        << c.source << ' ' << c.target;
  }
  EXPECT_FALSE(exists("out/none"));
}

TEST_F(HostTrees, CopyCreatesTheFoldersOfARelativePath) {
  write("in/a", "a");
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder_.path());
  EXPECT_TRUE(copyTree("in", "new\\deep"));
  std::filesystem::current_path(before);
  EXPECT_EQ(read("new/deep/a"), "a");
}

TEST_F(HostTrees, CopyReportsItsProgress) {
  constexpr std::uint64_t kSize = 10 << 20;
  constexpr std::uint64_t kLargestBlock = 4 << 20;
  write("in/large", std::string(kSize, 'l'));
  write("in/sub/small", "small");
  for (const bool exists : {false, true}) {
    std::uint64_t last = 0;
    std::uint64_t largest = 0;
    std::set<std::string> names;
    Progress end;
    const Report report = copy(Options().setProgress([&](const Progress& progress) {
      largest = std::max(largest, progress.bytesDone - last);
      last = progress.bytesDone;
      names.emplace(progress.name);
      end = progress;
      return true;
    }));
    EXPECT_TRUE(report) << exists;
    EXPECT_TRUE(largest <= kLargestBlock || !support::kPlatform.copiesInBlocks) << largest;
    EXPECT_EQ(names, (std::set<std::string>{"sub", "large", "sub\\small"}));
    EXPECT_EQ(end.filesDone, 2U);
    EXPECT_EQ(end.filesExpected, 2U);
    EXPECT_EQ(end.bytesDone, kSize + 5);
    EXPECT_EQ(end.bytesExpected, kSize + 5);
  }
}

TEST_F(HostTrees, SweepSaysWhatBecameOfEachOldFile) {
  write("old.tmp", "", 8);
  write("old.txt", "", 8);
  write("young.tmp", "");
  write("sub/old", "", 8);
  write("sub/read-only", "", 8);
  write("sub/in-use", "", 8);
  write("sub/lent", "", 8);
  const std::string deep = "sub/" + std::string(120, 'd') + '/' + std::string(130, 'e');
  const bool isLong = support::kPlatform.everyName;
  if (isLong) write(deep, "", 8);
  support::makeReadOnly(path("sub/read-only"));
  // Could be deleted, but not opened.
  const platform::FileHandle inUse =
      support::openFile(path("sub/in-use"), GENERIC_READ, FILE_SHARE_DELETE);
  const platform::FileHandle lent = support::openFile(path("sub/lent"), GENERIC_READ, 7);
  Reasons expected{{"old.tmp", Reason::None},
                   {"sub\\old", Reason::None},
                   {"sub\\read-only", Reason::NoPermission},
                   {"sub\\in-use", Reason::InUse},
                   {"sub\\lent", Reason::None}};
  if (isLong) expected[shown(deep)] = Reason::PathTooLong;
  EXPECT_EQ(reasonsOf(findOldFiles(folder_.name().c_str(), 7)), expected);
  EXPECT_TRUE(exists("old.tmp"));
  EXPECT_EQ(reasonsOf(deleteOldFiles(folder_.name().c_str(), 7)), expected);
  EXPECT_FALSE(exists("old.tmp"));
  EXPECT_FALSE(exists("sub/old"));
  EXPECT_TRUE(exists("old.txt"));
  EXPECT_EQ(findOldFiles(path("none").c_str(), 7).reason, Reason::Missing);
  EXPECT_EQ(findOldFiles(path("old.txt").c_str(), 7).reason, Reason::NotAFolder);
}

TEST_F(HostTrees, FindingKeepsEmptyFolders) {
  std::filesystem::create_directory(path("empty"));
  EXPECT_TRUE(findOldFiles(folder_.name().c_str(), 7));
  EXPECT_TRUE(exists("empty"));
}

TEST_F(HostTrees, DeletionSaysWhatStays) {
  write("tree/a", "a");
  write("tree/sub/b", "b");
  write("tree/sub/read-only", "r");
  write("tree/in-use", "u");
  write("tree/other/c", "c");
  support::makeReadOnly(path("tree/sub/read-only"));
  {
    const platform::FileHandle inUse = support::openFile(path("tree/in-use"), GENERIC_READ, 3);
    const Report report = deleteTree(path("tree").c_str());
    EXPECT_EQ(report.reason, Reason::None);
    EXPECT_EQ(reasonsOf(report), (Reasons{{"a", Reason::None},
                                          {"sub\\b", Reason::None},
                                          {"sub\\read-only", Reason::NoPermission},
                                          {"in-use", Reason::InUse},
                                          {"other\\c", Reason::None}}));
  }
  EXPECT_FALSE(exists("tree/other"));
  EXPECT_TRUE(exists("tree/sub/read-only"));
  EXPECT_EQ(deleteTree(path("none").c_str()).reason, Reason::Missing);
  EXPECT_EQ(deleteTree(path("tree/in-use").c_str()).reason, Reason::NotAFolder);
  EXPECT_TRUE(exists("tree/in-use"));
}

TEST_F(HostTrees, ALargeFolderIsReportedWhileItIsRead) {
  for (int i = 0; i < 2500; ++i) write("large/" + std::to_string(i), "");
  int calls = 0;
  const auto cancelling = [&](int last) {
    calls = 0;
    return Options().setProgress([&calls, last](auto&) { return ++calls < last; });
  };
  EXPECT_EQ(findOldFiles(path("large").c_str(), 7, cancelling(3)).reason, Reason::Cancelled);
  EXPECT_EQ(listTree(path("large").c_str(), "*", cancelling(2)).reason, Reason::Cancelled);
  EXPECT_EQ(calls, 2);
}

class Cancelled : public HostTrees, public testing::WithParamInterface<End> {};

TEST_P(Cancelled, CopyLeavesEachFileOldOrNew) {
  const std::string large(3 << 20, 'n');
  const std::map<std::string, std::string> contents{{"empty", ""},  {"large", large},
                                                    {"new", "n"},   {"old", "n"},
                                                    {"sub/a", "n"}, {"sub/b", large}};
  const std::set<std::string> existing{"large", "old", "sub/a"};
  for (const auto& [name, content] : contents) write("in/" + name, content);
  const auto prepare = [&] {
    std::filesystem::remove_all(support::pathOf(path("out")));
    for (const std::string& name : existing) write("out/" + name, "o");
  };
  bool isInterrupted = false;  // within a file
  const auto check = [&](const Report& report) {
    Reasons reasons = reasonsOf(report);
    std::size_t known = 0;
    for (const auto& [name, content] : contents) {
      const bool isThere = exists("out/" + name);
      const std::string now = read("out/" + name);
      const bool isNew = isThere && now == content;
      known += isThere ? 1 : 0;
      EXPECT_TRUE(isNew || (existing.count(name) != 0 ? now == "o" : !isThere)) << name;
      const auto item = reasons.extract(shown(name));
      if (GetParam() == End::ByException) continue;
      EXPECT_EQ(!item.empty() && item.mapped() == Reason::None, isNew) << name;
      isInterrupted = isInterrupted || (!item.empty() && item.mapped() == Reason::Cancelled);
    }
    EXPECT_EQ(reasons, Reasons{});
    std::size_t files = 0;
    const std::filesystem::path out = support::pathOf(path("out"));
    for (const auto& item : std::filesystem::recursive_directory_iterator(out)) {
      files += item.is_directory() ? 0 : 1;
    }
    EXPECT_EQ(files, known);
  };
  atEachCallback(
      GetParam(), prepare, [&](const Options& options) { return copy(options); }, check);
  EXPECT_EQ(isInterrupted, GetParam() == End::ByFalse);
  EXPECT_EQ(read("out/sub/b"), large);
}

TEST_P(Cancelled, CopyOfAFileLeavesItOldOrNew) {
  const std::string large(3 << 20, 'n');
  write("in/large", large);
  const auto prepare = [&] { write("out/large", "o"); };
  const auto copyOne = [&](const Options& options) {
    return copyFile(path("in/large").c_str(), path("out").c_str(), options);
  };
  const auto check = [&](const Report& report) {
    const bool isCopied = !report.items.empty() && report.items[0].reason == Reason::None;
    const bool isOld = read("out/large") == "o";
    EXPECT_FALSE(isOld && isCopied);
    EXPECT_TRUE(isOld || read("out/large") == large);
  };
  atEachCallback(GetParam(), prepare, copyOne, check);
}

TEST_P(Cancelled, DeletionsReportWhatIsDeleted) {
  const char* const names[] = {"a.tmp", "b.tmp", "sub/c", "sub/deep/d"};
  const auto prepare = [&] {
    for (const char* name : names) write(std::string("in/") + name, "x", 8);
  };
  const auto check = [&](const Report& report) {
    const Reasons reasons = reasonsOf(report);
    for (const std::string name : names) {
      if (GetParam() == End::ByException) continue;
      EXPECT_EQ(reasons.count(shown(name)), exists("in/" + name) ? 0U : 1U) << name;
    }
    for (const auto& [name, reason] : reasons) EXPECT_EQ(reason, Reason::None) << name;
    EXPECT_TRUE(exists("in"));
  };
  const std::string in = path("in");
  atEachCallback(
      GetParam(), prepare, [&](const Options& options) { return deleteTree(in.c_str(), options); },
      check);
  EXPECT_FALSE(support::exists(in));
  atEachCallback(
      GetParam(), prepare,
      [&](const Options& options) { return deleteOldFiles(in.c_str(), 7, options); }, check);
  EXPECT_FALSE(support::exists(in));
  const auto checkFound = [&](const Report&) {
    for (const std::string name : names) EXPECT_TRUE(exists("in/" + name)) << name;
  };
  atEachCallback(
      GetParam(), prepare,
      [&](const Options& options) { return findOldFiles(in.c_str(), 7, options); }, checkFound);
}

INSTANTIATE_TEST_SUITE_P(HostTrees, Cancelled, testing::Values(End::ByFalse, End::ByException));

}  // namespace
