# What `cmake --install` puts in place: headers, libraries, the command zel with its manual page and
# completion, pkg-config file and CMake package. The components are those of the Debian packages.
include(CMakePackageConfigHelpers)

set(zel_pacote_cmake ${CMAKE_INSTALL_LIBDIR}/cmake/ZEL_FelborFramework)

install(TARGETS ZEL_FelborFramework EXPORT ZEL_FelborFrameworkTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        COMPONENT biblioteca NAMELINK_COMPONENT desenvolvimento)
install(FILES ${PROJECT_SOURCE_DIR}/include/ZEL_FelborFramework.h
    ${PROJECT_SOURCE_DIR}/include/ZEL_Felbor.hpp
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT desenvolvimento)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/zel_felbor
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT desenvolvimento)

# What a static link needs beyond the archive, as pkg-config --static says it.
set(zel_privado "")
if(ZEL_ESTATICA)
    install(TARGETS ZEL_FelborFramework_estatica EXPORT ZEL_FelborFrameworkTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT desenvolvimento)
    set(zel_privado "Requires.private: nettle zlib\nLibs.private: -lhpdf -lstdc++ -lm")
    foreach(biblioteca IN LISTS CMAKE_DL_LIBS)
        string(APPEND zel_privado " -l${biblioteca}")
    endforeach()
endif()

install(EXPORT ZEL_FelborFrameworkTargets NAMESPACE ZEL::
    DESTINATION ${zel_pacote_cmake} COMPONENT desenvolvimento)
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
    DESTINATION ${zel_pacote_cmake} COMPONENT desenvolvimento)

# The prefix is told from where the file stands: `cmake --install --prefix` may choose another.
file(RELATIVE_PATH zel_ao_prefixo
    ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${PROJECT_SOURCE_DIR}/cmake/zel-felborframework.pc.in
    ${PROJECT_BINARY_DIR}/zel-felborframework.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zel-felborframework.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT desenvolvimento)

install(TARGETS zel RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ferramentas)
if(TARGET zel-envio)
    install(TARGETS zel-envio RUNTIME DESTINATION ${CMAKE_INSTALL_SBINDIR} COMPONENT servico)
    if(NOT ZEL_DEBIAN)
        install(FILES ${PROJECT_SOURCE_DIR}/apps/zel-envio/zel-envio.8
            DESTINATION ${CMAKE_INSTALL_MANDIR}/man8 COMPONENT servico)
    endif()
endif()
if(NOT ZEL_DEBIAN) # which installs it compressed
    install(FILES ${PROJECT_SOURCE_DIR}/apps/zel/zel.1
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ferramentas)
endif()
install(FILES ${PROJECT_SOURCE_DIR}/apps/zel/zel.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME zel
    COMPONENT ferramentas)
