#pragma once
// Example files for tables of calls, with the results and error codes of Windows. The tables are
// for both the Linux layer and Windows itself.

#include <gtest/gtest.h>

#include <string>

#include "support/folder_test.h"
#include "support/open_file.h"

class Conformance : public support::FolderTest {
 protected:
  static constexpr DWORD kRead = GENERIC_READ;
  static constexpr DWORD kWrite = GENERIC_WRITE;
  static constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;

  Conformance() {
    write("file", "12345");
    write("other", "67");
    write("read-only", "r");
    support::makeReadOnly(folder_.file("read-only"));
    write("held", "h");
    write("full/inside", "");
    std::filesystem::create_directory(folder_.path() / "empty");
    std::filesystem::create_directory(folder_.path() / "current");
    std::filesystem::current_path(folder_.path() / "current");
    holder_ = open("held", kRead, 0);
    EXPECT_TRUE(holder_);
  }
  ~Conformance() override { std::filesystem::current_path(former_); }

  std::string at(const std::string& name) const { return folder_.text() + name; }
  // Shares reading and writing by default.
  platform::FileHandle open(const std::string& name, DWORD access, DWORD share = 3,
                            DWORD disposition = OPEN_EXISTING) const {
    return support::openFile(at(name), access, share, disposition);
  }

  const std::filesystem::path former_ = std::filesystem::current_path();
  platform::FileHandle holder_;
};
