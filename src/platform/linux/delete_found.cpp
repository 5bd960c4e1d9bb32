#include "platform/delete_found.h"

#include "platform/linux/delete_file.h"
#include "platform/linux/found_entry.h"
#include "platform/linux/last_error.h"

using namespace platform::native;

bool platform::deleteFound(HANDLE search, const std::string& folder, const char* name) {
  const FoundEntry found = lastFound(search);
  if (found.name == nullptr) return DeleteFileA((folder + name).c_str()) != FALSE;
  const DWORD error = deleteAt(found.folder, found.name);
  return error == ERROR_SUCCESS || fail(error) != FALSE;
}
