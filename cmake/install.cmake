# The files that `make install` installs, in three components: the library that programs load, the
# files that their developers need besides, and the program vesk-fs.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS vesk_filesystem EXPORT VeskFileSystemTargets
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT library
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
  INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(DIRECTORY include/filesystem DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
  COMPONENT development)

if(TARGET vesk-fs)
  install(TARGETS vesk-fs RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT program)
  option(VESK_DEBIAN "Install documents as Debian's packages have them" OFF)
  set(zsh_directory "zsh/site-functions")
  if(VESK_DEBIAN)
    set(zsh_directory "zsh/vendor-completions")
  else()
    install(FILES docs/vesk-fs.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT program)
  endif()
  install(FILES tools/completions/vesk-fs.bash RENAME vesk-fs
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT program)
  install(FILES tools/completions/_vesk-fs
    DESTINATION "${CMAKE_INSTALL_DATADIR}/${zsh_directory}" COMPONENT program)
  install(FILES tools/completions/vesk-fs.fish
    DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d" COMPONENT program)
  # The program finds the library next to it, wherever the prefix is moved. A distribution's
  # package, whose library is in a directory of the system, sets VESK_RPATH to off.
  option(VESK_RPATH "Let the installed program find the library under its own prefix" ON)
  if(VESK_RPATH)
    file(RELATIVE_PATH library_from_program
      "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
    set(search_path "$ORIGIN/${library_from_program}" "$ORIGIN/../lib")
    list(REMOVE_DUPLICATES search_path)
    # In the build directory too: CMake fills a shorter path of its own with colons, and an empty part is
    # the current directory, from which the program would load any library.
    set_target_properties(vesk-fs PROPERTIES INSTALL_RPATH "${search_path}"
      BUILD_WITH_INSTALL_RPATH ${PROJECT_IS_TOP_LEVEL})
  endif()
endif()

set(package_directory "${CMAKE_INSTALL_LIBDIR}/cmake/VeskFileSystem")
install(EXPORT VeskFileSystemTargets NAMESPACE Vesk:: DESTINATION "${package_directory}"
  COMPONENT development)
# A program that is linked with the static library is linked with its libraries too.
set(find_dependencies "")
set(PC_REQUIRES "")
if(VESK_MFC)
  set(PC_CFLAGS " -DFILESYSTEM_MFC")
endif()
if(kind STREQUAL STATIC)
  if(NOT VESK_LIBDEFLATE OR NOT VESK_ISAL)
    set(find_dependencies "find_dependency(ZLIB)\n")
    set(PC_REQUIRES "zlib")
  endif()
  set(PC_CFLAGS " -DFILESYSTEM_STATIC")
  if(VESK_BZIP2)
    string(APPEND find_dependencies "find_dependency(BZip2)\n")
    # Not every system has a module of it.
    set(PC_LIBS " -lbz2")
  endif()
  if(VESK_LZMA)
    string(APPEND find_dependencies "find_dependency(LibLZMA)\n")
    string(APPEND PC_REQUIRES " liblzma")
  endif()
  foreach(dependency IN ITEMS Libdeflate Isal Nettle Zstd)
    if(NOT TARGET ${dependency}::${dependency})
      continue()
    endif()
    string(APPEND find_dependencies
      "list(APPEND CMAKE_MODULE_PATH \"\${CMAKE_CURRENT_LIST_DIR}\")\n"
      "find_dependency(${dependency})\n"
      "list(POP_BACK CMAKE_MODULE_PATH)\n")
    string(TOLOWER " ${dependency}" module)
    if(dependency MATCHES "^(Isal|Zstd)$")
      string(REPLACE " " " lib" module "${module}")
    endif()
    string(APPEND PC_REQUIRES "${module}")
    install(FILES cmake/Find${dependency}.cmake DESTINATION "${package_directory}"
      COMPONENT development)
  endforeach()
endif()
configure_package_config_file(cmake/VeskFileSystemConfig.cmake.in
  "${PROJECT_BINARY_DIR}/VeskFileSystemConfig.cmake" INSTALL_DESTINATION "${package_directory}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/VeskFileSystemConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
if(WIN32 AND kind STREQUAL SHARED)
  set(VESK_ABI "Visual C++")
  if(MINGW)
    set(VESK_ABI "mingw-w64")
  else()
    install(FILES $<TARGET_PDB_FILE:vesk_filesystem> DESTINATION "${CMAKE_INSTALL_BINDIR}"
      COMPONENT development OPTIONAL)
  endif()
  configure_file(cmake/windows-abi.cmake.in "${PROJECT_BINARY_DIR}/windows-abi.cmake" @ONLY)
  file(READ "${PROJECT_BINARY_DIR}/windows-abi.cmake" check_abi)
  file(APPEND "${PROJECT_BINARY_DIR}/VeskFileSystemConfigVersion.cmake" "${check_abi}")
endif()
install(FILES "${PROJECT_BINARY_DIR}/VeskFileSystemConfig.cmake"
  "${PROJECT_BINARY_DIR}/VeskFileSystemConfigVersion.cmake" DESTINATION "${package_directory}"
  COMPONENT development)

file(RELATIVE_PATH PC_PREFIX "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
configure_file(cmake/vesk-filesystem.pc.in "${PROJECT_BINARY_DIR}/vesk-filesystem.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/vesk-filesystem.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)
