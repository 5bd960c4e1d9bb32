# Finds Intel's ISA-L, which installs no CMake package. Defines the target Isal::Isal.
include(FindPackageHandleStandardArgs)

find_path(ISAL_INCLUDE_DIR isa-l/igzip_lib.h)
find_library(ISAL_LIBRARY NAMES isal libisal)
mark_as_advanced(ISAL_INCLUDE_DIR ISAL_LIBRARY)
find_package_handle_standard_args(Isal REQUIRED_VARS ISAL_LIBRARY ISAL_INCLUDE_DIR)

if(Isal_FOUND AND NOT TARGET Isal::Isal)
  add_library(Isal::Isal UNKNOWN IMPORTED)
  set_target_properties(Isal::Isal PROPERTIES
    IMPORTED_LOCATION "${ISAL_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${ISAL_INCLUDE_DIR}")
endif()
