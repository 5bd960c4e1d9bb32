// The start-up export, on platforms without MFC.

#include <filesystem/frame.h>

void InitFileSystemDLL(void) {}
