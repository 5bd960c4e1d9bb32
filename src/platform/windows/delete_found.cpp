#include "platform/delete_found.h"

bool platform::deleteFound(HANDLE, const char* path) { return DeleteFileA(path) != 0; }
