# The packages that `cpack` builds: Debian packages of the library, of the files for developers and of
# the program, and an archive of the sources.

set(VESK_MAINTAINER "Vesk FileSystem maintainers <maintainers@vesk-filesystem.invalid>"
  CACHE STRING "Maintainer of the Debian packages: name and address")

set(library_package libvesk.filesystem${PROJECT_VERSION_MAJOR})
set(development_package libvesk-filesystem-dev)
set(program_package vesk-fs)

if(VESK_DEBIAN)
  set(documents "${PROJECT_BINARY_DIR}/debian")
  file(MAKE_DIRECTORY "${documents}")
  # Compresses a file as Debian wants it: at the highest level, without name and time.
  function(compress file compressed)
    execute_process(COMMAND gzip -9nc "${PROJECT_SOURCE_DIR}/${file}"
      OUTPUT_FILE "${documents}/${compressed}" COMMAND_ERROR_IS_FATAL ANY)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${file}")
  endfunction()
  compress(CHANGELOG.md changelog.gz)
  compress(packaging/debian/changelog changelog.Debian.gz)
  compress(docs/vesk-fs.1 vesk-fs.1.gz)
  install(FILES "${documents}/vesk-fs.1.gz" DESTINATION share/man/man1 COMPONENT program)
  foreach(component library development program)
    install(FILES packaging/debian/copyright "${documents}/changelog.gz"
      "${documents}/changelog.Debian.gz"
      DESTINATION share/doc/${${component}_package} COMPONENT ${component})
    install(FILES packaging/debian/overrides/${${component}_package}
      DESTINATION share/lintian/overrides COMPONENT ${component})
  endforeach()
endif()

set(CPACK_PACKAGE_NAME vesk-filesystem)
set(CPACK_PACKAGE_VENDOR "Vesk FileSystem")
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_GENERATOR DEB)
set(CPACK_SOURCE_GENERATOR TXZ)
set(CPACK_SOURCE_PACKAGE_FILE_NAME "vesk-filesystem-${PROJECT_VERSION}")
set(CPACK_SOURCE_IGNORE_FILES "/\\.git/;/\\.git$;^${PROJECT_SOURCE_DIR}/build/")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${VESK_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/lib")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS OFF)
set(CPACK_COMPONENTS_ALL library development program)
foreach(component library development program)
  string(TOUPPER ${component} name)
  set(CPACK_DEBIAN_${name}_PACKAGE_NAME ${${component}_package})
endforeach()

# Each description begins with its package's summary.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(about "Path text, probes, directory chains, copying, enumeration, a write-buffered
file stream, XML as plain text, temporary storage and zip archives, with the
file semantics of Windows: share modes, drives and failure values included.
.")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
file(WRITE "${PROJECT_BINARY_DIR}/debian/shlibs"
  "libVesk.FileSystem ${PROJECT_VERSION_MAJOR} ${library_package} (>= ${PROJECT_VERSION})\n")
file(WRITE "${PROJECT_BINARY_DIR}/debian/triggers" "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
  "${PROJECT_BINARY_DIR}/debian/shlibs" "${PROJECT_BINARY_DIR}/debian/triggers")
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "file operations with Windows' semantics - shared library
${about}
This package contains the library that programs load.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "${library_package} (= ${PROJECT_VERSION}-1), libboost-dev (>= 1.74)")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "file operations with Windows' semantics - development files
${about}
This package contains the headers and what CMake and pkg-config need.")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "${library_package} (>= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION "pack, list, unpack and change zip archives
A program over the Vesk FileSystem library: it packs and unpacks directories,
lists, adds, extracts and removes entries of archives, and lists and sweeps
directory trees.
.
A run that fails or is killed leaves an archive with all the entries that it
had.")

include(CPack)
