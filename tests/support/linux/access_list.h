#pragma once
// Who may access a file, access control lists included.

#include <sys/stat.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace support {

// An entry of an access control list, as the kernel stores it.
struct AccessEntry {
  std::uint16_t tag;
  std::uint16_t rights;  // 4 to read, 2 to write, 1 to execute
  std::uint32_t id;
};

inline constexpr std::uint16_t kOwner = 1;
inline constexpr std::uint16_t kNamedUser = 2;
inline constexpr std::uint16_t kGroup = 4;
inline constexpr std::uint16_t kNamedGroup = 8;
inline constexpr std::uint16_t kMask = 16;
inline constexpr std::uint16_t kOthers = 32;
inline constexpr std::uint32_t kNoId = UINT32_MAX;

inline constexpr char kAccessList[] = "system.posix_acl_access";
inline constexpr char kDefaultList[] = "system.posix_acl_default";

// Returns the list that lets one more user read and write.
std::vector<AccessEntry> listFor(std::uint32_t user, std::uint16_t group, std::uint16_t others);

// Sets a list of a file or directory. False if the file system has none.
bool setList(const std::string& path, const char* name, const std::vector<AccessEntry>& list);

// Returns what each user and group can do with an open file, by a text for each. The mask is
// applied.
std::map<std::string, int> accessTo(int file);

}  // namespace support
