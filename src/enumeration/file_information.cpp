#include <cstddef>
#include <cstring>
#include <type_traits>

#include "enumeration/search.h"

namespace FileSystem::Detail {

static_assert(sizeof(FILE_INFORMATION) == sizeof(WIN32_FIND_DATAA));
static_assert(offsetof(FILE_INFORMATION, nFileSizeHigh) ==
              offsetof(WIN32_FIND_DATAA, nFileSizeHigh));
static_assert(offsetof(FILE_INFORMATION, cFileName) == offsetof(WIN32_FIND_DATAA, cFileName));
static_assert(std::is_trivially_copyable_v<FILE_INFORMATION>);

FILE_INFORMATION informationOf(const WIN32_FIND_DATAA& entry) {
  FILE_INFORMATION information;
  std::memcpy(&information, &entry, sizeof(information));
  return information;
}

}  // namespace FileSystem::Detail
