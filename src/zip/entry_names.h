#pragma once
// Names of entries. Archives store them in the OEM code page, callers use the ANSI code page.

#include <cstdint>
#include <set>
#include <string>

namespace zip {

// The longest stored name that the library handles, in bytes.
inline constexpr std::uint32_t kLongestName = 260;

// Converts a caller's name to the stored form and back.
std::string storedName(const std::string& name);
std::string callerName(const std::string& stored);

// Orders names, ignoring letter case.
struct NameLess {
  bool operator()(const std::string& a, const std::string& b) const;
};
// Callers' names. Two names that differ only in letter case are one element.
using NameSet = std::set<std::string, NameLess>;

}  // namespace zip
