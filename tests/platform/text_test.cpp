// Comparison and copies of texts, and code pages.

#include <gtest/gtest.h>

#include "platform/win32.h"

namespace {

TEST(Text, CopiesAndCodePages) {
  char buffer[4] = {'x', 'x', 'x', 'x'};
  EXPECT_EQ(lstrcpynA(buffer, "abcdef", 4), buffer);
  EXPECT_STREQ(buffer, "abc");
  EXPECT_EQ(lstrlenA(nullptr), 0);
  EXPECT_EQ(lstrcmpiA("ABC.tmp", "abc.TMP"), 0);
  EXPECT_NE(lstrcmpA("abc", "abd"), 0);
  WCHAR wide[8] = {};
  struct {
    UINT page;
    const char* text;
    int length, size, result;
    DWORD error;
  } const cases[] = {
      {CP_ACP, "abc", 3, 0, 3, ERROR_SUCCESS},
      {CP_OEMCP, "abc", -1, 8, 4, ERROR_SUCCESS},
      {CP_UTF8, "gr\xC3\xB6", 4, 8, 3, ERROR_SUCCESS},
      {CP_ACP, "abc", 3, 2, 0, ERROR_INSUFFICIENT_BUFFER},
      {CP_ACP, "abc", 0, 8, 0, ERROR_INVALID_PARAMETER},
      {CP_ACP, nullptr, 3, 8, 0, ERROR_INVALID_PARAMETER},
      {CP_ACP, "abc", 3, -1, 0, ERROR_INVALID_PARAMETER},
      {54321, "abc", 3, 8, 0, ERROR_INVALID_PARAMETER},
  };
  for (const auto& c : cases) {
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(MultiByteToWideChar(c.page, 0, c.text, c.length, wide, c.size), c.result);
    EXPECT_EQ(GetLastError(), c.error) << c.page << ' ' << c.length << ' ' << c.size;
  }
}

}  // namespace
