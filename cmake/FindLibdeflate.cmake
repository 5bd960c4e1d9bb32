# Finds libdeflate, whose older releases install no CMake package. Defines the target
# Libdeflate::Libdeflate.
include(FindPackageHandleStandardArgs)

find_path(LIBDEFLATE_INCLUDE_DIR libdeflate.h)
find_library(LIBDEFLATE_LIBRARY NAMES deflate libdeflate deflatestatic libdeflatestatic)
mark_as_advanced(LIBDEFLATE_INCLUDE_DIR LIBDEFLATE_LIBRARY)
find_package_handle_standard_args(Libdeflate REQUIRED_VARS LIBDEFLATE_LIBRARY LIBDEFLATE_INCLUDE_DIR)

if(Libdeflate_FOUND AND NOT TARGET Libdeflate::Libdeflate)
  add_library(Libdeflate::Libdeflate UNKNOWN IMPORTED)
  set_target_properties(Libdeflate::Libdeflate PROPERTIES
    IMPORTED_LOCATION "${LIBDEFLATE_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${LIBDEFLATE_INCLUDE_DIR}")
endif()
