# An overlay port over the checkout that contains it:
#   vcpkg install vesk-filesystem --overlay-ports=packaging/vcpkg
get_filename_component(SOURCE_PATH "${CURRENT_PORT_DIR}/../../.." ABSOLUTE)

vcpkg_check_features(OUT_FEATURE_OPTIONS features
  FEATURES libdeflate VESK_LIBDEFLATE zstd VESK_ZSTD bzip2 VESK_BZIP2 lzma VESK_LZMA
  tool VESK_TOOL)
# On Windows the system has the algorithms.
set(aes OFF)
if(VCPKG_TARGET_IS_WINDOWS)
  set(aes ON)
endif()
vcpkg_cmake_configure(SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS ${features} -DVESK_AES=${aes} -DVESK_ISAL=OFF -DVESK_TESTS=OFF -DVESK_WARNINGS=OFF)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME VeskFileSystem CONFIG_PATH lib/cmake/VeskFileSystem)
vcpkg_fixup_pkgconfig()
if("tool" IN_LIST FEATURES)
  vcpkg_copy_tools(TOOL_NAMES vesk-fs AUTO_CLEAN)
endif()
file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share")

# There is no license file yet; vcpkg_install_copyright takes its place once there is one.
set(VCPKG_POLICY_SKIP_COPYRIGHT_CHECK enabled)
