# The commands of daily work. Each target installs the Debian packages that it needs.

BUILD_PACKAGES = cmake g++ ninja-build libboost-dev zlib1g-dev libdeflate-dev libisal-dev nettle-dev \
                 libzstd-dev libbz2-dev liblzma-dev libgtest-dev
CLANG_PACKAGES = clang libclang-rt-dev
TEST_PACKAGES = zip unzip p7zip-full libarchive-tools busybox python3 coreutils diffutils \
                pkg-config binutils e2fsprogs xfsprogs $(CLANG_PACKAGES)
COMPILER_PACKAGES = $(CLANG_PACKAGES) clang-19 libc++-dev libc++abi-dev googletest
LINT_PACKAGES = clang clang-format clang-tidy python3
FUZZ_PACKAGES = $(CLANG_PACKAGES)
BENCH_PACKAGES = zip unzip p7zip-full pigz libarchive-tools isal pkg-config libzip-dev \
                 libpoco-dev libpugixml-dev libsqlite3-dev
DOCS_PACKAGES = doxygen
ARM64_PACKAGES = cmake ninja-build g++-aarch64-linux-gnu qemu-user libboost-dev googletest \
                 zlib1g-dev:arm64 libdeflate-dev:arm64 libisal-dev:arm64 nettle-dev:arm64 \
                 libzstd-dev:arm64 libbz2-dev:arm64 liblzma-dev:arm64 libstdc++6:arm64
MSVC_PACKAGES = clang-19 lld-19 llvm-19 python3
# What the sources are parsed with.
MSVC_PARSE_PACKAGES = clang libc++-dev python3
FILE_SYSTEM_PACKAGES = qemu-system-x86 exfatprogs ntfs-3g dosfstools e2fsprogs cpio kmod xz-utils \
                       iproute2 user-mode-linux nfs-kernel-server samba cifs-utils python3
ABI_PACKAGES = abigail-tools binutils
PACKAGE_PACKAGES = dpkg-dev file lintian
WINDOWS_PACKAGES = cmake ninja-build binutils zip libboost-dev \
                   g++-mingw-w64-x86-64-posix libz-mingw-w64-dev googletest wine64

VERSION = $(shell sed -n 's/^ *VERSION \([0-9.]*\)$$/\1/p' CMakeLists.txt)
PREFIX ?= /usr/local
# Where the benchmarks work: in memory, and on disk.
BENCH_MEMORY ?= /dev/shm
BENCH_DISK ?= build/bench
# The directory that `make demo` packs. Every machine that builds the library has it.
FOLDER ?= /usr/include

.PHONY: help demo test lint check-compilers mutants windows test-windows windows-packages test-arm64 \
        file-system-packages file-system-kernels test-file-systems test-large-archives msvc-packages msvc-arm64 test-msvc \
        windows-msvc fuzz bench docs abi \
        package install uninstall clean

help:
	@echo "make demo [FOLDER=...]     pack a real folder, unpack it, compare"
	@echo "make test                  build and run all tests, plain and under the sanitizers"
	@echo "make lint                  check the format, and the code with clang-tidy"
	@echo "make check-compilers       run the tests as built with libc++, clang-19, LTO, ThreadSanitizer and"
	@echo "                           the checked containers of libstdc++; ONLY='lto tsan' chooses"
	@echo "make mutants [FILES=...]   list small changes of the code that no test notices;"
	@echo "                           SEED=, SKIP=, COUNT=, BUDGET=seconds, QUICK=1 choose and limit"
	@echo "make fuzz                  build and run the fuzz targets, a minute each"
	@echo "make windows               cross-compile for 64-bit Windows, zip in build/windows"
	@echo "make windows-msvc MSVC_STL=DIRECTORY"
	@echo "                           the same for programs built with Visual C++, zip in build/msvc-clang;"
	@echo "                           the directory has Microsoft's standard library"
	@echo "make test-windows          run the tests under Wine"
	@echo "make test-arm64            cross-compile for 64-bit ARM Linux, run the tests under emulation"
	@echo "make test-file-systems     run the tests on casefold, FAT, exFAT, NTFS, NFS and SMB, and power cuts,"
	@echo "                           in virtual machines; QUICK=1: less"
	@echo "make test-large-archives   pack, change and unpack entries of 5 and 20 GB, and a million entries;"
	@echo "                           LARGE='5G 65536' chooses"
	@echo "make test-msvc MSVC_STL=DIRECTORY"
	@echo "                           run the tests in Visual C++'s binary interface under Wine, and build for"
	@echo "                           64-bit ARM Windows, without running it"
	@echo "make bench                 compare the speed with other programs; BENCH_QUICK=1: less"
	@echo "make install [PREFIX=...]  install library, headers and program (default $(PREFIX));"
	@echo "make uninstall             remove them again"
	@echo "make package               build Debian packages and a source archive in build/package"
	@echo "make abi                   compare the binary interface with those of all releases"
	@echo "make docs                  build the HTML reference in build/docs/html"
	@echo "make clean                 remove everything that was built"

demo:
	@scripts/install-packages $(BUILD_PACKAGES)
	@cmake --preset release -DVESK_TESTS=OFF -DVESK_BENCH=OFF >/dev/null
	@cmake --build --preset release --target vesk-fs
	@scripts/demo build/release/bin/vesk-fs "$(FOLDER)"

test:
	@scripts/install-packages $(BUILD_PACKAGES) $(TEST_PACKAGES)
	cmake --preset release -DVESK_TESTS=ON
	cmake --build --preset release
	cmake --preset asan
	cmake --build --preset asan
	ctest --preset release
	scripts/as-ordinary-user build/asan/Testing ctest --preset asan

lint:
	@scripts/install-packages $(BUILD_PACKAGES) $(BENCH_PACKAGES) $(LINT_PACKAGES)
	cmake --preset lint
	scripts/lint build/lint

check-compilers:
	@scripts/install-packages $(BUILD_PACKAGES) $(TEST_PACKAGES) $(COMPILER_PACKAGES)
	scripts/check-compilers build/compilers $(ONLY)

mutants:
	@scripts/install-packages $(BUILD_PACKAGES) $(TEST_PACKAGES)
	scripts/mutants $(if $(SEED),--seed $(SEED)) $(if $(SKIP),--skip $(SKIP)) \
	  $(if $(COUNT),--count $(COUNT)) $(if $(BUDGET),--budget $(BUDGET)) $(if $(QUICK),--quick) $(FILES)

fuzz:
	@scripts/install-packages $(BUILD_PACKAGES) $(FUZZ_PACKAGES)
	cmake --preset fuzz
	cmake --build --preset fuzz
	fuzz/run build/fuzz 60

windows-packages:
	@scripts/install-packages $(WINDOWS_PACKAGES)

windows: windows-packages
	cmake --preset windows -DVESK_TESTS=OFF
	cmake --build --preset windows
	scripts/windows-zip build/windows mingw-w64

test-windows: windows-packages
	@scripts/install-packages $(BUILD_PACKAGES) $(TEST_PACKAGES)
	cmake --preset release -DVESK_TESTS=ON
	cmake --build --preset release --target vesk-fs
	cmake --preset windows -DVESK_TESTS=ON
	cmake --build --preset windows
	scripts/test-windows build/windows

# Without those tests that build other projects, mount file systems, or check the sources.
test-arm64:
	@scripts/install-packages $(ARM64_PACKAGES) $(TEST_PACKAGES)
	cmake --preset arm64
	cmake --build --preset arm64
	ctest --preset arm64

# Fails where a package cannot be had.
file-system-packages:
	@scripts/install-packages $(FILE_SYSTEM_PACKAGES)
	@tests/file-systems/vm/fetch-kernel build/file-systems/kernel

# Fails where a kernel cannot start, too.
file-system-kernels: file-system-packages
	@tests/file-systems/can-run build/file-systems/kernel

# Takes an hour, and 30 GB on the disk of build.
test-large-archives:
	@scripts/install-packages $(BUILD_PACKAGES) $(TEST_PACKAGES) time openssl
	cmake --preset release -DVESK_TESTS=ON
	cmake --build --preset release --target vesk-fs
	tests/reliability/large-archives build/release/bin/vesk-fs build/large-archives $(LARGE)

test-file-systems: file-system-packages
	@scripts/install-packages $(BUILD_PACKAGES) $(TEST_PACKAGES)
	cmake --preset release -DVESK_TESTS=ON
	cmake --build --preset release --target platform_tests library_tests reliability_tests tool_tests vesk-fs
	tests/file-systems/run $(if $(QUICK),--quick) build/release/bin build/file-systems

# Microsoft publishes the sources of its standard library, and no Debian package has them.
MSVC_STL ?=
export MSVC_STL
ifneq ($(wildcard $(MSVC_STL)/inc/yvals_core.h),)
# Fails where a package cannot be had.
msvc-packages: windows-packages
	@scripts/install-packages $(MSVC_PACKAGES) $(MSVC_PARSE_PACKAGES)
	@packaging/windows/msvc-runtime/fetch-zlib build/zlib

msvc-runtime-%: msvc-packages
	cmake -G Ninja -S packaging/windows/msvc-runtime -B build/$@ --toolchain $(CURDIR)/cmake/msvc-clang.cmake \
	  -DVESK_MSVC_ARCHITECTURE=$* -DVESK_MSVC_RUNTIME=$(CURDIR)/build/$@
	cmake --build build/$@

windows-msvc: windows msvc-runtime-x86_64
	cmake --preset msvc-clang -DVESK_TESTS=OFF
	cmake --build --preset msvc-clang
	scripts/windows-zip build/msvc-clang msvc
	tests/msvc/check-package build

# Wine of this architecture cannot run it.
msvc-arm64: msvc-runtime-aarch64
	cmake --preset msvc-arm64
	cmake --build --preset msvc-arm64
	tests/exports/check-signatures build/msvc-arm64/bin/Vesk.FileSystem.dll

test-msvc: msvc-runtime-x86_64 msvc-arm64
	@scripts/install-packages $(BUILD_PACKAGES) $(TEST_PACKAGES)
	cmake --preset release -DVESK_TESTS=ON
	cmake --build --preset release --target vesk-fs
	cmake --preset msvc-clang -DVESK_TESTS=ON
	cmake --build --preset msvc-clang
	tests/msvc/check build/msvc
	scripts/test-windows build/msvc-clang
else
msvc-packages: windows-packages
	@scripts/install-packages $(MSVC_PARSE_PACKAGES)

define msvc_missing
It needs Microsoft's C++ standard library, tag vs-2022-17.8 of its public repository: fetch it, and
let MSVC_STL name its directory stl, which has inc and src.
endef
export msvc_missing

windows-msvc:
	@echo "$$msvc_missing" >&2; exit 1

test-msvc: msvc-packages
	@echo "NOT RUN: the Windows suite in Visual C++'s binary interface; the sources are only parsed." >&2
	@echo "$$msvc_missing" >&2
	tests/msvc/check build/msvc
endif

bench:
	@scripts/install-packages $(BUILD_PACKAGES) $(BENCH_PACKAGES)
	cmake --preset release -DVESK_BENCH=ON
	cmake --build --preset release --target bench
	mkdir -p build/bench
	BENCH_PACKAGES="$(sort $(BUILD_PACKAGES) $(BENCH_PACKAGES))" \
	  build/release/bin/bench build/bench memory="$(BENCH_MEMORY)" disk="$(abspath $(BENCH_DISK))"

docs:
	@scripts/install-packages $(DOCS_PACKAGES)
	mkdir -p build/docs
	VERSION=$(VERSION) doxygen docs/Doxyfile

# The library of the packages has debug information.
abi:
	@scripts/install-packages $(BUILD_PACKAGES) $(ABI_PACKAGES)
	cmake --preset package
	cmake --build --preset package --target vesk_filesystem
	tests/abi/check build/package/lib/libVesk.FileSystem.so

package:
	@scripts/install-packages $(BUILD_PACKAGES) $(PACKAGE_PACKAGES)
	cmake --preset package
	cmake --build --preset package
	rm -f build/package/*.deb build/package/*.tar.xz
	cd build/package && cpack && cpack --config CPackSourceConfig.cmake
	lintian --fail-on error,warning build/package/*.deb

install:
	@scripts/install-packages $(BUILD_PACKAGES)
	cmake --preset release
	cmake --build --preset release --target vesk-fs
	cmake --install build/release --prefix "$(PREFIX)"

uninstall:
	scripts/uninstall build/release "$(DESTDIR)$(PREFIX)"

clean:
	rm -rf build
