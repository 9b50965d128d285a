# SPDX-License-Identifier: MIT
# What builds of others find of this one: the package Kelvo, with the boundary and the function that adds a back end, for
# CMake, and the same libraries for pkg-config (kelvo, kelvo-playback).
include(CMakePackageConfigHelpers)
set(KELVO_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Kelvo)
set(KELVO_HEADER_DIR ${CMAKE_INSTALL_INCLUDEDIR}/kelvo)
set(KELVO_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The version that back ends are built for has one place, the header.
set(version_header ${CMAKE_SOURCE_DIR}/framework/core/KelvoApiVersion.h)
file(STRINGS ${version_header} line REGEX "^#define KELVO_API_VERSION \"")
string(REGEX REPLACE ".*\"(.*)\"" "\\1" KELVO_API_VERSION ${line})
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${version_header})

# What the reference of the API is made of (KelvoDocs.cmake).
function(kelvo_note_package_headers)
    list(TRANSFORM ARGN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    set_property(GLOBAL APPEND PROPERTY KELVO_PACKAGE_HEADERS ${ARGN})
endfunction()

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
    kelvo_note_package_headers(${headers})
endfunction()

# kelvo_install_parts(<target> <name> HEADERS headers... FOLDER folder)
# Puts a static library into the package, as Kelvo::<name>, with the headers that are its interface: <folder/Header.h>.
# Each back end has a copy of its own, so that only sources must fit, not binaries.
function(kelvo_install_parts target name)
    cmake_parse_arguments(ARG "" "FOLDER" "HEADERS" ${ARGN})
    add_library(Kelvo::${name} ALIAS ${target})
    set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
    install(TARGETS ${target} EXPORT KelvoExports
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development
        INCLUDES DESTINATION ${KELVO_HEADER_DIR})
    install(FILES ${ARG_HEADERS} DESTINATION ${KELVO_HEADER_DIR}/${ARG_FOLDER} COMPONENT Development)
    kelvo_note_package_headers(${ARG_HEADERS})
endfunction()

# They name folders relative to their own, so that the whole may be moved.
file(RELATIVE_PATH KELVO_INCLUDE_FROM_PKGCONFIG /${KELVO_PKGCONFIG_DIR} /${CMAKE_INSTALL_INCLUDEDIR})
foreach(module kelvo kelvo-playback)
    configure_file(${CMAKE_CURRENT_LIST_DIR}/${module}.pc.in ${CMAKE_BINARY_DIR}/package/${module}.pc @ONLY)
    install(FILES ${CMAKE_BINARY_DIR}/package/${module}.pc DESTINATION ${KELVO_PKGCONFIG_DIR} COMPONENT Development)
endforeach()

configure_package_config_file(
    ${CMAKE_CURRENT_LIST_DIR}/KelvoConfig.cmake.in ${CMAKE_BINARY_DIR}/package/KelvoConfig.cmake
    INSTALL_DESTINATION ${KELVO_PACKAGE_DIR} PATH_VARS KELVO_PLUGIN_INSTALL_DIR NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/package/KelvoConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(
    FILES
        ${CMAKE_BINARY_DIR}/package/KelvoConfig.cmake
        ${CMAKE_BINARY_DIR}/package/KelvoConfigVersion.cmake
        ${CMAKE_CURRENT_LIST_DIR}/KelvoPluginModule.cmake
    DESTINATION ${KELVO_PACKAGE_DIR} COMPONENT Development)
install(FILES ${CMAKE_SOURCE_DIR}/docs/plug-in-authors.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Development)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Development)
install(EXPORT KelvoExports NAMESPACE Kelvo:: DESTINATION ${KELVO_PACKAGE_DIR} COMPONENT Development)
