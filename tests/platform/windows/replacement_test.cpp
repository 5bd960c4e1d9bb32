// Files that are replaced: through replaceFile, NewVersion and ConfinedDirectory.

#include <algorithm>
#include <functional>

#include "platform/confined_directory.h"
#include "platform/new_version.h"
#include "platform/replace_file.h"
#include "platform/windows/replacement_file.h"
#include "support/folder_test.h"
#include "support/open_file.h"
// After windows.h, which it needs.
#include <sddl.h>

namespace {

constexpr DWORD kShareReadWrite = FILE_SHARE_READ | FILE_SHARE_WRITE;
constexpr DWORD kShown = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;

bool writeTo(HANDLE file, const std::string& bytes) {
  DWORD written = 0;
  return WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) != 0;
}

// A part of a file's security descriptor, as text.
std::string securityOf(const std::string& path, SECURITY_INFORMATION part) {
  unsigned char security[1024];
  DWORD size = 0;
  char* text = nullptr;
  if (GetFileSecurityA(path.c_str(), part, security, sizeof security, &size) == FALSE ||
      ConvertSecurityDescriptorToStringSecurityDescriptorA(security, SDDL_REVISION_1, part, &text,
                                                           nullptr) == FALSE) {
    return "<none>";
  }
  const std::string result = text;
  LocalFree(text);
  return result;
}

// Who may use a file.
std::string rightsOf(const std::string& path) {
  return securityOf(path, DACL_SECURITY_INFORMATION);
}

void setRights(const std::string& path, const std::string& text) {
  PSECURITY_DESCRIPTOR security = nullptr;
  ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorA(text.c_str(), SDDL_REVISION_1,
                                                                   &security, nullptr));
  EXPECT_TRUE(SetFileSecurityA(path.c_str(), DACL_SECURITY_INFORMATION, security));
  LocalFree(security);
}

WIN32_FILE_ATTRIBUTE_DATA attributesOf(const std::string& path) {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  EXPECT_TRUE(GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data)) << path;
  return data;
}

class Replacement : public support::FolderTest {
 protected:
  Replacement() {
    support::writeFile(target_, "old");
    support::writeFile(version_, "new content");
  }

  // Replaces the target by "new content".
  bool throughReplaceFile(DWORD share = kShareReadWrite) {
    platform::FileHandle opened = support::openFile(target_, GENERIC_READ, share);
    return platform::replaceFile(opened, target_.c_str(), version_.c_str());
  }
  bool throughNewVersion() {
    platform::NewVersion version(target_);
    const std::string path = version.create();
    inspect(path);
    support::writeFile(path, "new content");
    return version.putInPlace();
  }
  bool throughConfinedDirectory() {
    platform::ConfinedDirectory directory(folder_.text() + "in\\");
    const auto result = directory.write("target", [&](HANDLE file) {
      inspect(unfinished());
      return writeTo(file, "new content");
    });
    return static_cast<bool>(result);
  }

  // Checks a version that is not complete.
  void inspect(const std::string& path) {
    EXPECT_EQ(attributesOf(path).dwFileAttributes & FILE_ATTRIBUTE_HIDDEN,
              DWORD{FILE_ATTRIBUTE_HIDDEN});
    EXPECT_EQ(rightsOf(path), rightsOf(target_));
  }
  std::string unfinished() const {
    for (const auto& entry : std::filesystem::directory_iterator(folder_.path() / "in")) {
      if (entry.path().filename() != "target") return support::textOf(entry.path());
    }
    return "";
  }

  std::string target_ = folder_.file("in\\target");
  std::string version_ = folder_.file("version");
};

TEST_F(Replacement, KeepsRightsAndAttributes) {
  const std::function<bool()> ways[] = {
      [&] { return throughReplaceFile(); },
      [&] { return throughNewVersion(); },
      [&] { return throughConfinedDirectory(); },
  };
  const std::string usual = rightsOf(target_);
  const std::string owner = securityOf(target_, OWNER_SECURITY_INFORMATION).substr(sizeof "O:" - 1);
  // Everyone, or the owner alone.
  for (const std::string& user : {std::string("WD"), owner}) {
    for (const std::function<bool()>& way : ways) {
      support::writeFile(target_, "old");
      setRights(target_, "D:P(A;;FA;;;" + user + ")");
      SetFileAttributesA(target_.c_str(), kShown);
      const std::string before = rightsOf(target_);
      const WIN32_FILE_ATTRIBUTE_DATA old = attributesOf(target_);
      ASSERT_TRUE(way()) << GetLastError();
      EXPECT_EQ(support::readFile(target_), "new content");
      EXPECT_EQ(rightsOf(target_), before);
      const WIN32_FILE_ATTRIBUTE_DATA now = attributesOf(target_);
      EXPECT_EQ(now.dwFileAttributes & kShown, old.dwFileAttributes & kShown);
      EXPECT_EQ(unfinished(), "");
      SetFileAttributesA(target_.c_str(), FILE_ATTRIBUTE_NORMAL);
    }
    EXPECT_NE(rightsOf(target_), usual);
  }
}

// A file of its own takes the place of the old one, so that at no instant a part is there.
TEST_F(Replacement, IsAnotherFile) {
  const auto indexOf = [&] {
    BY_HANDLE_FILE_INFORMATION information{};
    GetFileInformationByHandle(support::openFile(target_, 0).get(), &information);
    return information.nFileIndexLow;
  };
  const DWORD before = indexOf();
  ASSERT_TRUE(throughReplaceFile());
  EXPECT_NE(indexOf(), before);
}

TEST_F(Replacement, NeverTakesThePlaceOfAnotherFile) {
  platform::FileHandle opened = support::openFile(version_, GENERIC_READ, kShareReadWrite);
  EXPECT_FALSE(platform::replaceFile(opened, target_.c_str(), version_.c_str()));
  EXPECT_EQ(support::readFile(target_), "old");
  EXPECT_EQ(unfinished(), "");
}

TEST_F(Replacement, AFileThatOthersShareIsOverwritten) {
  const platform::FileHandle reader = support::openFile(target_, GENERIC_READ, kShareReadWrite);
  ASSERT_TRUE(throughReplaceFile());
  char bytes[20] = {};
  DWORD size = 0;
  EXPECT_TRUE(ReadFile(reader.get(), bytes, sizeof bytes, &size, nullptr));
  EXPECT_EQ(std::string(bytes), "new content");
  EXPECT_EQ(unfinished(), "");
}

TEST_F(Replacement, AFileThatOthersDoNotShareIsKept) {
  const platform::FileHandle reader = support::openFile(target_, GENERIC_READ, FILE_SHARE_READ);
  EXPECT_FALSE(throughReplaceFile());
  EXPECT_EQ(support::readFile(target_), "old");
  EXPECT_EQ(unfinished(), "");
}

TEST_F(Replacement, NamesOfOneFileStayTogether) {
  const std::string second = folder_.file("second");
  ASSERT_TRUE(CreateHardLinkA(second.c_str(), target_.c_str(), nullptr));
  ASSERT_TRUE(throughReplaceFile());
  EXPECT_EQ(support::readFile(second), "new content");
  EXPECT_EQ(unfinished(), "");
}

TEST_F(Replacement, ATargetWithALongPathIsOverwritten) {
  // The longest path that Windows takes; the name of a temporary file is longer than its name.
  constexpr std::size_t kLongest = MAX_PATH - 1;
  std::string path = folder_.text();
  while (path.size() + 2 < kLongest) {
    path += std::string(std::min<std::size_t>(kLongest - path.size() - 2, 99), 'x') + '\\';
    // Windows takes a longer path of a directory in this form alone.
    const std::wstring form = L"\\\\?\\" + std::filesystem::path(path).wstring();
    ASSERT_TRUE(CreateDirectoryW(form.c_str(), nullptr)) << path;
  }
  target_ = path + "t";
  support::writeFile(target_, "old");
  ASSERT_TRUE(throughReplaceFile()) << GetLastError();
  EXPECT_EQ(support::readFile(target_), "new content");
}

TEST_F(Replacement, AFolderThatTakesNoFileHasItOverwritten) {
  support::writeFile(target_, "an old content that is longer");
  support::run(folder_.path(), "chmod 555 in");
  EXPECT_TRUE(throughReplaceFile());
  support::run(folder_.path(), "chmod 755 in");
  EXPECT_EQ(support::readFile(target_), "new content");
}

// Windows does not make a mapped file shorter.
TEST_F(Replacement, AVersionThatIsPartlyWrittenInPlaceRemainsBeside) {
  support::writeFile(target_, "an old content that is longer");
  const platform::FileHandle reader = support::openFile(target_, GENERIC_READ, kShareReadWrite);
  const platform::FileHandle mapping(
      CreateFileMappingA(reader.get(), nullptr, PAGE_READONLY, 0, 0, nullptr));
  ASSERT_TRUE(mapping);
  for (const char* const kept : {"in\\target.new", "in\\target.new2"}) {
    EXPECT_FALSE(throughReplaceFile());
    EXPECT_EQ(read(kept), "new content");
  }
}

// Under a name that is too long no file gets in place, and there is none.
TEST_F(Replacement, AVersionOfALostTargetRemainsBeside) {
  std::filesystem::remove(target_);
  {
    platform::ReplacementFile version(folder_.file("in\\") + std::string(300, 'a'), nullptr);
    ASSERT_TRUE(version && writeTo(version.handle(), "new content") && version.complete());
    EXPECT_FALSE(version.putInPlace(true));
  }
  const std::string kept = unfinished();
  EXPECT_TRUE(kept.ends_with(".new")) << kept;
  EXPECT_EQ(support::readFile(kept), "new content");
}

TEST_F(Replacement, DeletesWhatKilledProcessesLeft) {
  // A process sweeps a folder once an hour, so no other test uses this one.
  target_ = folder_.file("swept\\target");
  const std::string old = folder_.file("swept\\~zaAB.TMP");
  const std::string recent = folder_.file("swept\\~zaAC.TMP");
  for (const std::string& file : {target_, old, recent}) support::writeFile(file, "part");
  SetFileAttributesA(old.c_str(), FILE_ATTRIBUTE_HIDDEN);
  support::setWriteTime(old, 1'000'000'000);
  ASSERT_TRUE(throughReplaceFile());
  EXPECT_FALSE(support::exists(old));
  EXPECT_TRUE(support::exists(recent));
}

}  // namespace
