#include "platform/unlisted_names.h"

#include "platform/linux/listing/found_entry.h"

std::vector<std::string> platform::unlistedNames(HANDLE search) {
  return native::namesPassedOver(search);
}
