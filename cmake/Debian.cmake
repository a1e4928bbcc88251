# Debian packages of what is installed, one a component; scripts/package calls cpack, and
# cmake/debian/completar for what cpack leaves out: Multi-Arch, debug symbols, symbols files.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zel-felborframework)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "NFC-e documents for point-of-sale programs")
set(ZEL_MANTENEDOR "the ZEL_FelborFramework authors <authors@zel-felborframework.invalid>"
    CACHE STRING "Who answers for the Debian packages")
set(CPACK_PACKAGE_CONTACT ${ZEL_MANTENEDOR})
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES OFF) # cmake/debian/completar keeps what it strips
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE gzip) # quick: cmake/debian/completar packs anew
set(CPACK_DEBIAN_PACKAGE_SOURCE ${CPACK_PACKAGE_NAME})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(ZEL_PAGINA "https://zel-felborframework.invalid/" CACHE STRING "Homepage of the Debian packages")
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE ${ZEL_PAGINA})
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
execute_process(COMMAND dpkg-architecture -t ${CMAKE_LIBRARY_ARCHITECTURE} -q DEB_HOST_ARCH
    OUTPUT_VARIABLE CPACK_DEBIAN_PACKAGE_ARCHITECTURE OUTPUT_STRIP_TRAILING_WHITESPACE)

# SOURCE_DATE_EPOCH says the date of the source: the same source makes the same packages.
set(zel_debian ${PROJECT_BINARY_DIR}/debian)
# The licence as a copyright file has it: indented, a point in an empty line.
file(READ ${PROJECT_SOURCE_DIR}/LICENSE zel_licenca)
string(REGEX REPLACE "^.*\n(Permission is)" "\\1" zel_licenca "${zel_licenca}")
string(STRIP "${zel_licenca}" zel_licenca)
string(REPLACE "\n\n" "\n.\n" zel_licenca "${zel_licenca}")
string(REPLACE "\n" "\n " zel_licenca " ${zel_licenca}")
string(TIMESTAMP zel_data "%a, %d %b %Y %H:%M:%S +0000" UTC)
foreach(arquivo changelog copyright)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/debian/${arquivo}.in ${zel_debian}/${arquivo} @ONLY)
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/apps/zel/zel.1 ${zel_debian}/zel.1 COPYONLY)
execute_process(COMMAND gzip -9nkf ${zel_debian}/changelog ${zel_debian}/zel.1
    COMMAND_ERROR_IS_FATAL ANY)
install(FILES ${zel_debian}/zel.1.gz
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ferramentas)

# One package: what it depends on beside what its shared objects need, and its description.
function(zel_pacote componente pacote secao depende descricao)
    string(TOUPPER ${componente} nome)
    set(CPACK_DEBIAN_${nome}_PACKAGE_NAME ${pacote} PARENT_SCOPE)
    set(CPACK_DEBIAN_${nome}_PACKAGE_SECTION ${secao} PARENT_SCOPE)
    set(CPACK_DEBIAN_${nome}_PACKAGE_DEPENDS "${depende}" PARENT_SCOPE)
    set(CPACK_DEBIAN_${nome}_DESCRIPTION "${descricao}" PARENT_SCOPE)
    install(FILES ${zel_debian}/copyright ${zel_debian}/changelog.gz
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${pacote} COMPONENT ${componente})
endfunction()

set(zel_esta_versao "(= ${PROJECT_VERSION})")
set(zel_dev_depende "libzel-felborframework1 ${zel_esta_versao}")
if(ZEL_ESTATICA)
    # The pkg-config file requires nettle and zlib, and a static link takes libharu's shared object.
    string(REGEX MATCH "^[0-9]+" zel_gcc ${CMAKE_CXX_COMPILER_VERSION})
    string(APPEND zel_dev_depende
        ", nettle-dev, zlib1g-dev, libhpdf-dev, libstdc++-${zel_gcc}-dev | libstdc++-dev")
endif()
zel_pacote(biblioteca libzel-felborframework1 libs ""
    "A point-of-sale program drives this library as it would drive a fiscal
printer. It computes the taxes of each receipt and writes the document of
model 65, layout 3.10, for a component that sends it to the tax authority.")
zel_pacote(desenvolvimento libzel-felborframework-dev libdevel "${zel_dev_depende}"
    "Headers for C and C++17, shared and static library for linking, pkg-config
file and CMake package of libZEL_FelborFramework.")
set(zel_ferramentas_depende "libzel-felborframework1 (>= ${PROJECT_VERSION})")
if(TARGET zel_cupom)
    string(APPEND zel_ferramentas_depende ", libzel-cupom1 (>= ${PROJECT_VERSION})")
endif()
if(TARGET zel_envio)
    string(APPEND zel_ferramentas_depende ", libzel-envio1 (>= ${PROJECT_VERSION})")
endif()
zel_pacote(ferramentas zel-tools utils "${zel_ferramentas_depende}"
    "The command zel checks a till's data directory and its documents, reads and
stores configuration values, explains the return codes of the library, sells,
shows and prints receipts, writes requests, and makes of them the documents
that the tax authority takes. It speaks Portuguese.")
set(CPACK_COMPONENTS_ALL biblioteca desenvolvimento ferramentas)
if(TARGET zel_cupom)
    zel_pacote(cupom libzel-cupom1 libs "fonts-dejavu-core"
        "Draws receipts in printer mark-up as PNG and SVG pictures.")
    zel_pacote(cupom-dev libzel-cupom-dev libdevel "libzel-cupom1 ${zel_esta_versao}"
        "Header, link library and pkg-config file of libzel-cupom, which draws
receipts in printer mark-up as PNG and SVG pictures.")
    list(APPEND CPACK_COMPONENTS_ALL cupom cupom-dev)
endif()
if(TARGET zel_envio)
    zel_pacote(envio libzel-envio1 libs ""
        "Makes of what a till wrote the documents that the tax authority takes:
layout 4.00, signed, with QR code, judged by the published schemas.")
    zel_pacote(envio-dev libzel-envio-dev libdevel "libzel-envio1 ${zel_esta_versao}"
        "Header, link library and pkg-config file of libzel-envio, which makes the
documents that the tax authority takes.")
    list(APPEND CPACK_COMPONENTS_ALL envio envio-dev)
endif()
if(TARGET zel-envio)
    set(zel_sistema ${PROJECT_SOURCE_DIR}/apps/zel-envio/sistema)
    configure_file(${zel_sistema}/../zel-envio.8 ${zel_debian}/zel-envio.8 COPYONLY)
    execute_process(COMMAND gzip -9nkf ${zel_debian}/zel-envio.8 COMMAND_ERROR_IS_FATAL ANY)
    install(FILES ${zel_debian}/zel-envio.8.gz
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man8 COMPONENT servico)
    install(FILES ${zel_sistema}/zel-envio.service DESTINATION /lib/systemd/system COMPONENT servico)
    install(FILES ${zel_sistema}/zel-envio.toml DESTINATION /etc/zel-envio COMPONENT servico)
    foreach(parte sysusers tmpfiles)
        install(FILES ${zel_sistema}/${parte}.conf DESTINATION /usr/lib/${parte}.d
            RENAME zel-envio.conf COMPONENT servico)
    endforeach()
    zel_pacote(servico zel-envio net
        "systemd | systemd-standalone-sysusers, systemd | systemd-standalone-tmpfiles"
        "Finds the documents that tills write, puts them into the layout that the
tax authority takes, signs and sends them, asks for what was not answered,
keeps what the law wants kept, and tells the till. A page on 127.0.0.1 shows
the queue.")
    set(CPACK_DEBIAN_SERVICO_PACKAGE_CONTROL_EXTRA "")
    foreach(parte conffiles postinst prerm postrm)
        list(APPEND CPACK_DEBIAN_SERVICO_PACKAGE_CONTROL_EXTRA
            ${PROJECT_SOURCE_DIR}/cmake/debian/zel-envio/${parte})
    endforeach()
    list(APPEND CPACK_COMPONENTS_ALL servico)
endif()

# A shared object in the system's directory asks for the loader's cache by a trigger.
foreach(nome BIBLIOTECA CUPOM ENVIO)
    set(CPACK_DEBIAN_${nome}_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
endforeach()
include(CPack)
