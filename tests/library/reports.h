#pragma once
// What calls report, and calls that a callback of the host ends.

#include <filesystem/options.h>
#include <filesystem/results.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <string>

using Reasons = std::map<std::string, FileSystem::Reason>;

// Returns the reasons in a report, by the names of its items.
inline Reasons reasonsOf(const FileSystem::Report& report) {
  Reasons reasons;
  for (const FileSystem::ItemResult& item : report.items) reasons[item.name] = item.reason;
  return reasons;
}

// Returns a name as reports have it.
inline std::string shown(std::string name) {
  std::replace(name.begin(), name.end(), '/', '\\');
  return name;
}

// The ways in which a callback ends a call.
enum class End { ByFalse, ByException };
struct Stop {};

// Runs a call that ends at a callback, after `prepare()`; for each callback in turn. `check` receives
// the report, which is empty after an exception. Returns the number of callbacks of the whole call,
// which is the last one.
inline int atEachCallback(End end, const std::function<void()>& prepare,
                          const std::function<FileSystem::Report(const FileSystem::Options&)>& call,
                          const std::function<void(const FileSystem::Report&)>& check) {
  for (int last = 1;; ++last) {
    SCOPED_TRACE(last);
    prepare();
    int count = 0;
    const auto options = FileSystem::Options().setProgress([&](const FileSystem::Progress&) {
      if (++count < last) return true;
      EXPECT_EQ(count, last) << "called again";
      if (end == End::ByException) throw Stop();
      return false;
    });
    FileSystem::Report report;
    bool isThrown = false;
    try {
      report = call(options);
    } catch (const Stop&) {
      isThrown = true;
    }
    if (count < last) {
      EXPECT_TRUE(report);
      return count;
    }
    EXPECT_EQ(isThrown, end == End::ByException);
    EXPECT_EQ(report.reason, isThrown ? FileSystem::Reason::None : FileSystem::Reason::Cancelled);
    check(report);
  }
}
