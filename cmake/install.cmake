# Installs headers, both libraries, the CMake package vidproc (vidproc::vidproc shared, vidproc::vidproc_static) and a
# pkg-config file. Components: runtime (what a program linked to the shared library needs), development, tools.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS vidproc_shared vidproc_static EXPORT vidproc_targets
        RUNTIME COMPONENT runtime
        LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
        ARCHIVE COMPONENT development
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/vidproc DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

set(packageDirectory ${CMAKE_INSTALL_LIBDIR}/cmake/vidproc)
install(EXPORT vidproc_targets NAMESPACE vidproc:: FILE vidproc-config.cmake DESTINATION ${packageDirectory}
        COMPONENT development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vidproc-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vidproc-config-version.cmake DESTINATION ${packageDirectory} COMPONENT development)

# Relative to the file, so that the tree works wherever `cmake --install --prefix` puts it.
file(RELATIVE_PATH prefixFromPackageFile ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${PROJECT_SOURCE_DIR}/cmake/vidproc.pc.in ${PROJECT_BINARY_DIR}/vidproc.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vidproc.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
