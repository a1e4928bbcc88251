# What `cmake --install` puts in place: header, shared object, the command zel, pkg-config file and
# CMake package.
include(CMakePackageConfigHelpers)

set(zel_pacote_cmake ${CMAKE_INSTALL_LIBDIR}/cmake/ZEL_FelborFramework)

install(TARGETS ZEL_FelborFramework EXPORT ZEL_FelborFrameworkTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS zel RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${PROJECT_SOURCE_DIR}/include/ZEL_FelborFramework.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT ZEL_FelborFrameworkTargets NAMESPACE ZEL:: DESTINATION ${zel_pacote_cmake})

configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/ZEL_FelborFrameworkConfig.cmake.in
    ${PROJECT_BINARY_DIR}/ZEL_FelborFrameworkConfig.cmake
    INSTALL_DESTINATION ${zel_pacote_cmake})
write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/ZEL_FelborFrameworkConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/ZEL_FelborFrameworkConfig.cmake
    ${PROJECT_BINARY_DIR}/ZEL_FelborFrameworkConfigVersion.cmake
    DESTINATION ${zel_pacote_cmake})

# The prefix is told from where the file stands: `cmake --install --prefix` may choose another.
file(RELATIVE_PATH zel_ao_prefixo
    ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${PROJECT_SOURCE_DIR}/cmake/zel-felborframework.pc.in
    ${PROJECT_BINARY_DIR}/zel-felborframework.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zel-felborframework.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
