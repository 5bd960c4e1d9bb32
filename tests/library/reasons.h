#pragma once
// The reasons in a report, by the names of its items.

#include <filesystem/results.h>

#include <map>
#include <string>

using Reasons = std::map<std::string, FileSystem::Reason>;

inline Reasons reasonsOf(const FileSystem::Report& report) {
  Reasons reasons;
  for (const FileSystem::ItemResult& item : report.items) reasons[item.name] = item.reason;
  return reasons;
}
