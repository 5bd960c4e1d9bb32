#include "platform/delete_found.h"

bool platform::deleteFound(HANDLE, const std::string& folder, const char* name) {
  return DeleteFileA((folder + name).c_str()) != 0;
}
