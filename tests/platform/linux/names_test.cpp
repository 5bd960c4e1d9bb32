// Links, FIFOs, the umask, and the variable TMPDIR.

#include <sys/stat.h>

#include <cstdlib>
#include <utility>
#include <vector>

#include "platform/conformance.h"
#include "support/linux/temporary_variable.h"

namespace {

class NamesOnLinux : public Conformance {
 protected:
  NamesOnLinux() {
    write(".hidden", "");
    if (!hasSpecialFiles_) return;
    std::filesystem::create_directory_symlink(folder_.file("full"), folder_.file("link"));
    std::filesystem::create_symlink(folder_.file("file"), folder_.file("file-link"));
    std::filesystem::create_symlink(folder_.file("nowhere"), folder_.file("dangling"));
    mkfifo(folder_.file("fifo").c_str(), 0600);
  }

  const bool hasSpecialFiles_ = support::fileSystem().links && support::fileSystem().fifos;
};

TEST_F(NamesOnLinux, Attributes) {
  if (!hasSpecialFiles_) GTEST_SKIP() << "no links here";
  constexpr DWORD kLink = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
  EXPECT_EQ(GetFileAttributesA(at("link").c_str()), kLink);
  EXPECT_EQ(GetFileAttributesA(at("file-link").c_str()), FILE_ATTRIBUTE_ARCHIVE);
  EXPECT_EQ(GetFileAttributesA(at("fifo").c_str()), FILE_ATTRIBUTE_ARCHIVE);
  constexpr DWORD kHidden = FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN;
  EXPECT_EQ(GetFileAttributesA(at(".hidden").c_str()), kHidden);
  EXPECT_EQ(GetFileAttributesA(at("dangling").c_str()), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
}

TEST_F(NamesOnLinux, SearchForNoName) {
  const std::pair<const char*, DWORD> cases[] = {{"full\\", ERROR_FILE_NOT_FOUND},
                                                 {"file\\", ERROR_DIRECTORY},
                                                 {"none\\", ERROR_PATH_NOT_FOUND}};
  for (const auto& [name, error] : cases) {
    WIN32_FIND_DATAA data{};
    EXPECT_FALSE(platform::SearchHandle(FindFirstFileA(at(name).c_str(), &data)));
    EXPECT_EQ(GetLastError(), error) << name;
  }
}

// Deleting a link leaves its target.
TEST_F(NamesOnLinux, Deletion) {
  if (!hasSpecialFiles_) GTEST_SKIP() << "no links here";
  for (const char* name : {"file-link", "dangling", "fifo"}) {
    EXPECT_TRUE(DeleteFileA(at(name).c_str())) << name;
  }
  EXPECT_FALSE(CreateDirectoryA(at("link").c_str(), nullptr));
  EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
  EXPECT_TRUE(RemoveDirectoryA(at("link").c_str()));
  EXPECT_TRUE(exists("full/inside"));
  EXPECT_TRUE(exists("file"));
  chmod(folder_.file("empty").c_str(), 0555);
  EXPECT_FALSE(RemoveDirectoryA(at("empty").c_str()));
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
}

TEST_F(NamesOnLinux, UmaskMakesNoFileReadOnly) {
  const mode_t mask = umask(0222);
  char temporary[MAX_PATH];
  EXPECT_NE(GetTempFileNameA(folder_.name().c_str(), "~", 0, temporary), 0U);
  for (const std::string& name : {std::string(temporary), at("new")}) {
    for (const DWORD disposition : {OPEN_ALWAYS, CREATE_ALWAYS}) {
      EXPECT_TRUE(support::openFile(name, kReadWrite, 0, disposition)) << name;
    }
  }
  umask(mask);
}

TEST_F(NamesOnLinux, TemporaryFolder) {
  char path[MAX_PATH];
  const support::TemporaryVariable variable(folder_.name());
  const auto length = static_cast<DWORD>(folder_.text().size());
  EXPECT_EQ(GetTempPathA(sizeof(path), path), length);
  EXPECT_EQ(GetTempPathA(length + 1, path), length);
  EXPECT_EQ(GetTempPathA(length, path), length + 1);
  EXPECT_EQ(path, folder_.text());
  setenv("TMPDIR", "/no/such/folder", 1);
  GetTempPathA(sizeof(path), path);
  EXPECT_STREQ(path, "/tmp\\");
}

// Names that Windows refuses or changes are those of files, which stay apart from each other.
TEST_F(NamesOnLinux, AreTakenLiterally) {
  if (!support::fileSystem().anyName) GTEST_SKIP() << "no such names here";
  std::vector<std::string> names{"a",  "a.",  "a ",  "a. ",  "a?",
                                 "a*", "NUL", "CON", "COM1", "aux.txt"};
  if (support::fileSystem().exactCase) names.emplace_back("nul");
  for (const std::string& name : names) {
    const platform::FileHandle file = open("empty/" + name, kWrite, 0, CREATE_NEW);
    DWORD count = 0;
    EXPECT_TRUE(
        WriteFile(file.get(), name.data(), static_cast<DWORD>(name.size()), &count, nullptr));
  }
  for (const std::string& name : names) {
    EXPECT_EQ(read("empty/" + name), name);
    EXPECT_TRUE(CopyFileA(at("empty/" + name).c_str(), at("full/" + name).c_str(), TRUE)) << name;
    EXPECT_TRUE(DeleteFileA(at("empty/" + name).c_str())) << name;
    EXPECT_EQ(read("full/" + name), name);
  }
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path() / "empty"));
}

// The name of the device does not hide a file that another program created.
TEST_F(NamesOnLinux, AFileNUL) {
  write("current/NUL", "content");
  char byte = 0;
  DWORD count = 0;
  EXPECT_TRUE(ReadFile(support::openFile("NUL").get(), &byte, 1, &count, nullptr));
  EXPECT_EQ(byte, 'c');
  EXPECT_TRUE(DeleteFileA("NUL"));
  EXPECT_FALSE(exists("current/NUL"));
}

}  // namespace
