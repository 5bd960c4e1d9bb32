# Headers that are the same on all platforms. The directory they are in has headers of this machine too,
# so that only links to them are used.
set(header_only "${CMAKE_BINARY_DIR}/header-only")
if(NOT IS_DIRECTORY "${header_only}")
  file(MAKE_DIRECTORY "${header_only}")
  foreach(library boost CLI)
    file(CREATE_LINK "/usr/include/${library}" "${header_only}/${library}" SYMBOLIC)
  endforeach()
endif()
set(Boost_NO_BOOST_CMAKE ON)
set(Boost_INCLUDE_DIR "${header_only}" CACHE PATH "Folder with Boost's headers alone")
