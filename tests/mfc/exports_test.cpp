// A host with MFC calls the five functions that have its types.

#include <filesystem/enumeration.h>
#include <filesystem/files.h>
#include <filesystem/path.h>
#include <gtest/gtest.h>

#include <string>

#include "support/temporary_folder.h"

namespace {

using namespace FileSystem;

const char* const kProgram = VESK_TEST_DATA "/version/special1.dll";

TEST(MfcExports, TakeAndReturnTexts) {
  EXPECT_STREQ(ParentDirectory("C:\\no such folder\\name"), "C:\\no such folder\\");
  CString text("before");
  PathRoot("C:\\folder\\name", text);
  EXPECT_STREQ(text, "C:\\");
  EXPECT_EQ(VerGetFileInfoString(kProgram, "ProductVersion", text), 1);
  EXPECT_STREQ(text, "2.5.1");
  EXPECT_EQ(FormatVersion(kProgram, text), 1);
  EXPECT_STREQ(text, "2.5.1A");
}

TEST(MfcExports, AddToAnArray) {
  const support::TemporaryFolder folder;
  for (const char* name : {"x.a", "x.b", "y.a"}) support::writeFile(folder.file(name), "");
  CStringArray names;
  names.SetAtGrow(0, "before");
  const char* const end = nullptr;
  EXPECT_EQ(EnumFiles(names, folder.text().c_str(), "*", ".a", ".b", end), 1U);
  ASSERT_EQ(names.GetSize(), 2);
  EXPECT_STREQ(names.GetAt(0), "before");
  EXPECT_STREQ(names.GetAt(1), "x");
}

}  // namespace
