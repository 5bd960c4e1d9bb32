// Path text in a double-byte code page. This platform has none, so the functions are compiled into
// this program with a lead byte of its own.

#include <filesystem/files.h>
#include <filesystem/path.h>
#include <gtest/gtest.h>

#include <string>

#include "platform/win32.h"

BOOL testsLeadByte(BYTE byte) { return byte == 0x83 ? TRUE : FALSE; }

int FileSystem::FileExists(const char* path) { return std::string(path) == "f\x83/" ? 1 : 0; }

namespace {

using namespace FileSystem;

TEST(DoubleByte, SecondBytesDoNotSeparate) {
  struct {
    const char *path, *folder, *name, *extension, *root, *parent;
  } const cases[] = {
      {"d\\\x83\\x.t", "d\\", "\x83\\x", ".t", "d\\", "d\\"},
      {"\x83\\x\\y", "\x83\\x\\", "y", "", "\x83\\x\\", "\x83\\x\\"},
      {"d/a.\x83.b", "d/", "a", ".\x83.b", "d/", "d/a.\x83.b\\"},
      {"a\x83.b", "", "a\x83.b", "", "a\x83.b", "a\x83.b\\"},
      {"\x83\x83\\a", "\x83\x83\\", "a", "", "\x83\x83\\", "\x83\x83\\"},
      {"d\\x\x83", "d\\", "x\x83", "", "d\\", "d\\"},
      {"a\x83\\\\b", "a\x83\\\\", "b", "", "a\x83\\\\", "a\x83\\\\"},
      {"\\\\s\x83\\r\\h\x83/x/a", "\\\\s\x83\\r\\h\x83/x/", "a", "", "\\\\s\x83\\r\\h\x83/x/",
       "\\\\s\x83\\r\\"},
      {"\x83\\x", "", "\x83\\x", "", "\x83\\x", "\x83\\x\\"},
      {"\\\x83\\x", "\\", "\x83\\x", "", "\\", "\\"},
      {"d\\a\x83\\", "d\\", "a\x83\\", "", "d\\", "d\\"},
      {"f\x83/", "", "f\x83/", "", "f\x83/", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(extractPath(c.path), c.folder) << c.path;
    EXPECT_EQ(extractName(c.path), c.name) << c.path;
    EXPECT_EQ(extractExtension(c.path), c.extension) << c.path;
    CString root;
    PathRoot(c.path, root);
    EXPECT_STREQ(root, c.root) << c.path;
    EXPECT_STREQ(ParentDirectory(c.path), c.parent) << c.path;
  }
}

}  // namespace
