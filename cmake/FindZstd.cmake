# Finds Zstandard's library, whose CMake package not every system installs. Defines the target
# Zstd::Zstd.
include(FindPackageHandleStandardArgs)

find_path(ZSTD_INCLUDE_DIR zstd.h)
find_library(ZSTD_LIBRARY NAMES zstd libzstd zstd_static)
mark_as_advanced(ZSTD_INCLUDE_DIR ZSTD_LIBRARY)
find_package_handle_standard_args(Zstd REQUIRED_VARS ZSTD_LIBRARY ZSTD_INCLUDE_DIR)

if(Zstd_FOUND AND NOT TARGET Zstd::Zstd)
  add_library(Zstd::Zstd UNKNOWN IMPORTED)
  set_target_properties(Zstd::Zstd PROPERTIES
    IMPORTED_LOCATION "${ZSTD_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${ZSTD_INCLUDE_DIR}")
endif()
