# What others need to build with libfins_runtime: its headers, a CMake package and a pkg-config file. None of them names a
# folder of this machine, so that what is installed can be moved.
include(CMakePackageConfigHelpers)

install(TARGETS fins_runtime EXPORT fins_runtime
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT runtime_dev)
install(DIRECTORY runtime/include/fins_runtime DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT runtime_dev)

set(folder ${CMAKE_INSTALL_LIBDIR}/cmake/fins_runtime)
configure_file(cmake/fins_runtimeConfig.cmake.in ${PROJECT_BINARY_DIR}/fins_runtimeConfig.cmake @ONLY)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/fins_runtimeConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(EXPORT fins_runtime NAMESPACE fins_runtime:: FILE fins_runtimeTargets.cmake
    DESTINATION ${folder} COMPONENT runtime_dev)
install(FILES ${PROJECT_BINARY_DIR}/fins_runtimeConfig.cmake ${PROJECT_BINARY_DIR}/fins_runtimeConfigVersion.cmake
    DESTINATION ${folder} COMPONENT runtime_dev)

string(REGEX REPLACE "[^/]+" ".." FINS_RUNTIME_PREFIX_OF_PC ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
configure_file(packaging/fins_runtime.pc.in ${PROJECT_BINARY_DIR}/fins_runtime.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/fins_runtime.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT runtime_dev)
