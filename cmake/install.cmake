# Installs headers, both libraries, the CMake package vidproc (vidproc::vidproc shared, vidproc::vidproc_static) and a
# pkg-config file. The same target names work inside this build.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set_target_properties(vidproc_shared PROPERTIES EXPORT_NAME vidproc VERSION ${PROJECT_VERSION}
                                                SOVERSION ${PROJECT_VERSION_MAJOR})
add_library(vidproc::vidproc ALIAS vidproc_shared)
add_library(vidproc::vidproc_static ALIAS vidproc_static)

install(TARGETS vidproc_shared vidproc_static EXPORT vidproc_targets
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/vidproc DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(packageDirectory ${CMAKE_INSTALL_LIBDIR}/cmake/vidproc)
install(EXPORT vidproc_targets NAMESPACE vidproc:: FILE vidproc-config.cmake DESTINATION ${packageDirectory})
write_basic_package_version_file(vidproc-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vidproc-config-version.cmake DESTINATION ${packageDirectory})

# Relative to the file, so that the tree works wherever `cmake --install --prefix` puts it.
file(RELATIVE_PATH prefixFromPackageFile ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${PROJECT_SOURCE_DIR}/cmake/vidproc.pc.in vidproc.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vidproc.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
