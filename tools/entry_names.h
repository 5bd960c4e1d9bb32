#pragma once
// Names of entries that the library or other programs take for one another.

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

// The name with `\` as its only separator. Programs take both separators for one.
std::string withBackslashes(std::string name);

// Finds names that differ in letter case only. The library replaces and removes all of them with
// one.
class CaseIndex {
 public:
  // The names outlive the object.
  explicit CaseIndex(const std::vector<std::string>& names);

  // Indices of the names that differ from `name`, and in letter case only.
  std::vector<std::size_t> twinsOf(const std::string& name) const;

 private:
  const std::vector<std::string>& names_;
  std::unordered_multimap<std::string, std::size_t> byKey_;
};
