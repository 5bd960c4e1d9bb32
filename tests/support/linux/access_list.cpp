#include "support/linux/access_list.h"

#include <sys/xattr.h>

#include <cstring>

namespace support {
namespace {

constexpr std::uint32_t kVersion = 2;

// A list in the kernel's form is its version and its entries.
std::vector<AccessEntry> entriesOf(const std::vector<char>& bytes) {
  if (bytes.size() < sizeof(kVersion)) return {};
  std::vector<AccessEntry> list((bytes.size() - sizeof(kVersion)) / sizeof(AccessEntry));
  std::memcpy(list.data(), bytes.data() + sizeof(kVersion), list.size() * sizeof(AccessEntry));
  return list;
}

}  // namespace

std::vector<AccessEntry> listFor(std::uint32_t user, std::uint16_t group, std::uint16_t others) {
  return {{kOwner, 6, kNoId},
          {kNamedUser, 6, user},
          {kGroup, group, kNoId},
          {kMask, 6, kNoId},
          {kOthers, others, kNoId}};
}

bool setList(const std::string& path, const char* name, const std::vector<AccessEntry>& list) {
  std::vector<char> bytes(sizeof(kVersion) + list.size() * sizeof(AccessEntry));
  std::memcpy(bytes.data(), &kVersion, sizeof(kVersion));
  std::memcpy(bytes.data() + sizeof(kVersion), list.data(), list.size() * sizeof(AccessEntry));
  return setxattr(path.c_str(), name, bytes.data(), bytes.size(), 0) == 0;
}

std::map<std::string, int> accessTo(int file) {
  struct stat status {};
  fstat(file, &status);
  const std::string owner = "user " + std::to_string(status.st_uid);
  const std::string group = "group " + std::to_string(status.st_gid);
  const int mask = static_cast<int>(status.st_mode >> 3 & 7);
  std::map<std::string, int> access{{owner, static_cast<int>(status.st_mode >> 6 & 7)},
                                    {group, mask},
                                    {"others", static_cast<int>(status.st_mode & 7)}};
  std::vector<char> bytes(1024);
  const ssize_t size = fgetxattr(file, kAccessList, bytes.data(), bytes.size());
  bytes.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
  for (const AccessEntry& entry : entriesOf(bytes)) {
    const int rights = entry.rights & mask;
    if (entry.tag == kGroup) access[group] = rights;
    if (entry.tag == kNamedUser) access["user " + std::to_string(entry.id)] = rights;
    if (entry.tag == kNamedGroup) access["group " + std::to_string(entry.id)] = rights;
  }
  return access;
}

}  // namespace support
