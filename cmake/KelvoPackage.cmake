# SPDX-License-Identifier: MIT
# What builds of others find of this one: the package Kelvo, with the boundary and the function that adds a back end.
include(CMakePackageConfigHelpers)
set(KELVO_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Kelvo)
set(KELVO_HEADER_DIR ${CMAKE_INSTALL_INCLUDEDIR}/kelvo)

# kelvo_install_package(<target> <name>)
# Puts a library of the boundary into the package, as Kelvo::<name>, with those of its sources that are its interface:
# the headers Kelvo*.h next to its CMakeLists.txt. Those that only the library itself includes are named *_p.h.
function(kelvo_install_package target name)
    add_library(Kelvo::${name} ALIAS ${target})
    set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
    target_compile_features(${target} INTERFACE cxx_std_20)
    install(TARGETS ${target} EXPORT KelvoExports
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} NAMELINK_COMPONENT Development
        INCLUDES DESTINATION ${KELVO_HEADER_DIR})
    get_target_property(headers ${target} SOURCES)
    list(FILTER headers INCLUDE REGEX "^Kelvo[A-Za-z]*\\.h$")
    install(FILES ${headers} DESTINATION ${KELVO_HEADER_DIR} COMPONENT Development)
endfunction()

configure_package_config_file(
    ${CMAKE_CURRENT_LIST_DIR}/KelvoConfig.cmake.in ${CMAKE_BINARY_DIR}/package/KelvoConfig.cmake
    INSTALL_DESTINATION ${KELVO_PACKAGE_DIR} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/package/KelvoConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(
    FILES
        ${CMAKE_BINARY_DIR}/package/KelvoConfig.cmake
        ${CMAKE_BINARY_DIR}/package/KelvoConfigVersion.cmake
        ${CMAKE_CURRENT_LIST_DIR}/KelvoPluginModule.cmake
    DESTINATION ${KELVO_PACKAGE_DIR} COMPONENT Development)
install(EXPORT KelvoExports NAMESPACE Kelvo:: DESTINATION ${KELVO_PACKAGE_DIR} COMPONENT Development)
