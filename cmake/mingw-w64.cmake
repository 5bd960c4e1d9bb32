# Cross-compiles for 64-bit Windows with Debian's mingw-w64 and its POSIX threads.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(triple x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triple}-g++-posix)
set(CMAKE_RC_COMPILER ${triple}-windres)

# The binaries need no DLLs but those of Windows and ours.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")

# Libraries and headers are the target's; programs are this machine's.
set(CMAKE_FIND_ROOT_PATH "/usr/${triple}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# zlib as an archive, not the import library of its DLL.
set(CMAKE_FIND_LIBRARY_SUFFIXES .a)
set(ZLIB_LIBRARY "/usr/${triple}/lib/libz.a" CACHE FILEPATH "zlib, to link statically")

include("${CMAKE_CURRENT_LIST_DIR}/header-only.cmake")

# Tests run under Wine, with a prefix in the build directory.
set(CMAKE_CROSSCOMPILING_EMULATOR
  "${CMAKE_CURRENT_LIST_DIR}/../scripts/under-wine;${CMAKE_BINARY_DIR}/wine;--test")
