# Finds the cryptographic library nettle, which installs no CMake package. Defines the target
# Nettle::Nettle.
include(FindPackageHandleStandardArgs)

find_path(NETTLE_INCLUDE_DIR nettle/pbkdf2.h)
find_library(NETTLE_LIBRARY NAMES nettle libnettle)
mark_as_advanced(NETTLE_INCLUDE_DIR NETTLE_LIBRARY)
find_package_handle_standard_args(Nettle REQUIRED_VARS NETTLE_LIBRARY NETTLE_INCLUDE_DIR)

if(Nettle_FOUND AND NOT TARGET Nettle::Nettle)
  add_library(Nettle::Nettle UNKNOWN IMPORTED)
  set_target_properties(Nettle::Nettle PROPERTIES
    IMPORTED_LOCATION "${NETTLE_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${NETTLE_INCLUDE_DIR}")
endif()
