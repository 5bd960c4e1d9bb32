# What `make install` puts under the prefix.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS filesystem EXPORT VeskFileSystemTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(TARGETS vesk-fs RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(DIRECTORY include/filesystem DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(FILES docs/vesk-fs.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")

# The command finds the library beside it, wherever the prefix is moved.
file(RELATIVE_PATH library_from_command
  "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
set_target_properties(vesk-fs PROPERTIES INSTALL_RPATH "$ORIGIN/${library_from_command}")

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/VeskFileSystem")
install(EXPORT VeskFileSystemTargets NAMESPACE Vesk:: DESTINATION "${package_folder}")
configure_package_config_file(cmake/VeskFileSystemConfig.cmake.in VeskFileSystemConfig.cmake
  INSTALL_DESTINATION "${package_folder}")
write_basic_package_version_file(VeskFileSystemConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/VeskFileSystemConfig.cmake"
  "${PROJECT_BINARY_DIR}/VeskFileSystemConfigVersion.cmake" DESTINATION "${package_folder}")

file(RELATIVE_PATH PC_PREFIX "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
configure_file(cmake/vesk-filesystem.pc.in vesk-filesystem.pc @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/vesk-filesystem.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
