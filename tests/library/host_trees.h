#pragma once
// The fixture of the tests that copy and delete trees.

#include <filesystem/filesystem.h>
#include <gtest/gtest.h>

#include <ctime>
#include <string>

#include "library/reports.h"
#include "support/folder_test.h"
#include "support/open_file.h"

class HostTrees : public support::FolderTest {
 protected:
  static constexpr std::time_t kDay = 86400;

  std::string path(const std::string& name) const { return folder_.file(name); }
  void write(const std::string& name, const std::string& content, std::time_t days = 0) const {
    support::writeFile(path(name), content);
    support::setWriteTime(path(name), std::time(nullptr) - days * kDay);
  }
  FileSystem::Report copy(const FileSystem::Options& options = {}) const {
    return FileSystem::copyTree(path("in").c_str(), path("out").c_str(), options);
  }
};
