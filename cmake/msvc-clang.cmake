# Cross-compiles for 64-bit Windows in Visual C++'s binary interface, with clang and lld, Microsoft's
# standard library, and mingw-w64's C headers. What Visual C++ has beside these is in
# packaging/windows/msvc-runtime, which is built first, into VESK_MSVC_RUNTIME.

set(CMAKE_SYSTEM_NAME Windows)
set(VESK_MSVC_ARCHITECTURE x86_64 CACHE STRING "x86_64 or aarch64; what is built for the latter is not run")
set(CMAKE_SYSTEM_PROCESSOR ${VESK_MSVC_ARCHITECTURE})
set(triple ${VESK_MSVC_ARCHITECTURE}-pc-windows-msvc)
set(mingw /usr/x86_64-w64-mingw32)
foreach(language C CXX)
  set(CMAKE_${language}_COMPILER_TARGET ${triple})
endforeach()
set(CMAKE_C_COMPILER clang-19)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_RC_COMPILER llvm-rc-19)
set(CMAKE_AR llvm-ar-19)
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES MSVC_STL VESK_MSVC_ARCHITECTURE VESK_MSVC_RUNTIME)
# The first builds of the compiler's checks are before that of the runtime.
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

set(MSVC_STL "$ENV{MSVC_STL}" CACHE PATH "Microsoft's standard library: the folder with its inc and src")
set(VESK_MSVC_RUNTIME "${CMAKE_BINARY_DIR}/../msvc-runtime-${VESK_MSVC_ARCHITECTURE}"
  CACHE PATH "Where packaging/windows/msvc-runtime is built")
set(runtime "${CMAKE_CURRENT_LIST_DIR}/../packaging/windows/msvc-runtime")

# mingw-w64's headers need __GNUC__, which the library's sources do not use for this target. _UCRT selects
# the functions of ucrtbase.dll. USE_NO_MINGW_SETJMP_TWO_ARGS leaves setjmp to clang's own headers. The last
# macro keeps algorithms in headers; their vector code needs functions whose target options clang asks for,
# and Visual C++ does not.
set(flags "-fms-compatibility-version=19.38 -fgnuc-version=4.2.1 -D_UCRT -DUSE_NO_MINGW_SETJMP_TWO_ARGS -D_USE_STD_VECTOR_ALGORITHMS=0")
set(CMAKE_C_FLAGS_INIT "${flags} -idirafter ${mingw}/include")
set(CMAKE_CXX_FLAGS_INIT
  "${flags} -isystem ${runtime}/include -isystem ${MSVC_STL}/inc -idirafter ${mingw}/include")
# Of headers, resources use macros alone; the compiler is that of these headers.
set(CMAKE_RC_FLAGS_INIT "-D __GNUC__=4 -I ${mingw}/include")
set(link "-fuse-ld=lld-link -L${VESK_MSVC_RUNTIME}/lib -lmsvcprt -lmsvcp -lvcruntime -lucrt")
# googletest uses the old names of these functions.
foreach(name close creat dup dup2 fdopen read write)
  string(APPEND link " -Wl,/alternatename:${name}=_${name}")
endforeach()
set(CMAKE_EXE_LINKER_FLAGS_INIT "${link}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${link}")
# CMake's own list has libraries that nothing here uses.
set(CMAKE_CXX_STANDARD_LIBRARIES "-lkernel32 -ladvapi32 -lntdll" CACHE STRING "Libraries of each program")
# A PDB of functions and lines, without the names of this machine's directories. The driver passes none of
# these options to the linker, and would warn.
foreach(language C CXX)
  set(CMAKE_${language}_FLAGS_RELEASE_INIT
    "-gline-tables-only -gcodeview -ffile-prefix-map=${CMAKE_SOURCE_DIR}=. -Wno-unused-command-line-argument")
endforeach()
string(APPEND CMAKE_SHARED_LINKER_FLAGS_INIT " -Wl,/debug -Wl,/pdbaltpath:%_PDB%")
set(CMAKE_MSVC_RUNTIME_LIBRARY MultiThreadedDLL)

set(CMAKE_FIND_ROOT_PATH "${VESK_MSVC_RUNTIME}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ZLIB_LIBRARY "${VESK_MSVC_RUNTIME}/lib/z.lib" CACHE FILEPATH "zlib, to link statically")
set(ZLIB_INCLUDE_DIR "${VESK_MSVC_RUNTIME}/../zlib" CACHE PATH "zlib's headers")

include("${CMAKE_CURRENT_LIST_DIR}/header-only.cmake")

# CMake finds mingw-w64's <pthread.h>; on Windows googletest has threads without it.
set(gtest_disable_pthreads ON CACHE BOOL "Use Windows' threads")

# Tests run under Wine, with a prefix in the build directory.
set(CMAKE_CROSSCOMPILING_EMULATOR
  "${CMAKE_CURRENT_LIST_DIR}/../scripts/under-wine;${CMAKE_BINARY_DIR}/wine;--test")
