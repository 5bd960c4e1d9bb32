# Cross-compiles for 64-bit ARM Linux with Debian's compiler and its libraries of that architecture.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

# Tests run under emulation.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64)
