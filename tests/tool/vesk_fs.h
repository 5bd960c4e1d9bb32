#pragma once
// The command-line program, run as a user runs it.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/folder_test.h"

class VeskFs : public support::FolderTest {
 protected:
  // A command and its expected result. `error` is part of the only line on standard error; empty
  // for no line.
  struct Row {
    std::string arguments;
    int status;
    std::string output;
    std::string error = {};
  };

  // Standard output of a run, then the exit status, then standard error. Shell
  // text may precede the arguments, up to a `|`.
  std::string run(const std::string& arguments) const {
    const std::size_t pipe = arguments.rfind("| ");
    const std::size_t start = pipe == std::string::npos ? 0 : pipe + 2;
    const std::string text = output(arguments.substr(0, start) + VESK_FS " " +
                                    arguments.substr(start) + " 2>err; echo \"[$?]\"");
    const std::string error = read("err");
    std::filesystem::remove(folder_.path() / "err");
    return text + error;
  }

  void check(const std::vector<Row>& rows) const {
    for (const Row& row : rows) {
      const std::string result = run(row.arguments);
      SCOPED_TRACE(row.arguments + ": " + result);
      const std::string expected = row.output + '[' + std::to_string(row.status) + "]\n";
      EXPECT_TRUE(result.starts_with(expected)) << expected;
      const std::string error = result.substr(std::min(result.size(), expected.size()));
      EXPECT_EQ(error.starts_with("vesk-fs: "), !error.empty());
      EXPECT_EQ(std::count(error.begin(), error.end(), '\n'), row.error.empty() ? 0 : 1);
      EXPECT_NE(error.find(row.error), std::string::npos) << row.error;
    }
  }

  // Makes an archive of texts, each as `NAME=TEXT`.
  void makeZip(const std::string& zip, const std::string& texts) const {
    python("z = zipfile.ZipFile('" + zip + "', 'w')\n" + "for text in '" + texts +
           "'.split(): z.writestr(*text.split('='))\nz.close()");
  }
};
