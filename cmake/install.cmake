# What a host needs to build against the library: header, shared library, CMake package, pkg-config file.
option(QUENLIS_INSTALL "Install the library" ${PROJECT_IS_TOP_LEVEL})
if(NOT QUENLIS_INSTALL)
  return()
endif()
include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/quenlis)

install(FILES ${PROJECT_SOURCE_DIR}/include/quenlis.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS quenlis EXPORT quenlis-targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})

# Everything that the library itself links is private, so the package finds nothing else.
install(EXPORT quenlis-targets NAMESPACE quenlis:: DESTINATION ${package_dir})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/quenlis-config.cmake.in quenlis-config.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(quenlis-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/quenlis-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/quenlis-config-version.cmake DESTINATION ${package_dir})

# Paths in the file are relative to itself: the tree may be installed or moved anywhere.
file(RELATIVE_PATH pc_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH pc_libdir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH pc_includedir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
configure_file(${CMAKE_CURRENT_LIST_DIR}/quenlis.pc.in quenlis.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/quenlis.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
