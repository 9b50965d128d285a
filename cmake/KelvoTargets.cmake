# SPDX-License-Identifier: MIT
# What every target of this project shares, and the functions that add one.
include(KelvoPluginModule)

add_library(kelvo-options INTERFACE)
target_compile_definitions(kelvo-options INTERFACE
    # GLib headers use the names "signals" and "slots".
    QT_NO_KEYWORDS
    # Impossible states end the program in every build type, with the condition, file and line.
    QT_FORCE_ASSERTS
    QT_DEPRECATED_WARNINGS)
target_compile_options(kelvo-options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
    -Wimplicit-fallthrough -Wduplicated-cond -Wlogical-op
    # Assertion texts name files relative to the repository.
    -fmacro-prefix-map=${CMAKE_SOURCE_DIR}/=)
# Qt's link interface names libraries that most targets never call.
target_link_options(kelvo-options INTERFACE -Wl,--as-needed)
if(CMAKE_UNITY_BUILD)
    # Several sources that are built as one look like a header to the compiler.
    target_compile_options(kelvo-options INTERFACE -Wno-subobject-linkage)
endif()
if(KELVO_WERROR)
    target_compile_options(kelvo-options INTERFACE -Werror)
endif()
if(KELVO_SANITIZE)
    # The tests' own code is left alone, which saves a third of its time to build; what it calls is looked after.
    set(watched $<NOT:$<PATH:IS_PREFIX,${CMAKE_SOURCE_DIR}/tests,$<TARGET_PROPERTY:SOURCE_DIR>>>)
    target_compile_options(kelvo-options INTERFACE -fno-omit-frame-pointer
        $<${watched}:-fsanitize=${KELVO_SANITIZE}> $<${watched}:-fno-sanitize-recover=all>)
    target_link_options(kelvo-options INTERFACE -fsanitize=${KELVO_SANITIZE})
    set(program $<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>)
    if(KELVO_SANITIZE MATCHES address)
        target_sources(kelvo-options INTERFACE $<${program}:${CMAKE_CURRENT_LIST_DIR}/sanitizers/BusThread.cpp>)
        target_link_libraries(kelvo-options INTERFACE $<${program}:Qt6::DBus>)
        # The sanitizers' own data hold up to a million addresses, which a program that can lie anywhere corrects at each
        # start: a quarter of the processor time of the short runs that most tests are.
        target_link_options(kelvo-options INTERFACE $<${program}:-no-pie>)
    endif()
    if(KELVO_SANITIZE MATCHES thread)
        # Tests too: what they hand over is looked at by the other thread (framework/core/HandOver.h).
        target_compile_definitions(kelvo-options INTERFACE KELVO_WATCH_THREADS)
        target_sources(kelvo-options INTERFACE $<${program}:${CMAKE_CURRENT_LIST_DIR}/sanitizers/SharedClone.cpp>)
    endif()
    # GCC's flow analysis sees uninitialised values that only the sanitizers' own checks introduce.
    target_compile_options(kelvo-options INTERFACE -Wno-maybe-uninitialized)
endif()

# Most of the time that a file takes to build is Qt's headers: they are compiled once for all libraries. A library
# may define more than this one does, never less.
file(CONFIGURE OUTPUT common-headers.cpp CONTENT "// Precompiles Qt's headers.\n")
add_library(kelvo-common-headers OBJECT EXCLUDE_FROM_ALL ${CMAKE_CURRENT_BINARY_DIR}/common-headers.cpp)
target_link_libraries(kelvo-common-headers PRIVATE kelvo-options Qt6::Core)
target_precompile_headers(kelvo-common-headers PRIVATE <QtCore>)
set_target_properties(kelvo-common-headers PROPERTIES POSITION_INDEPENDENT_CODE ON AUTOMOC OFF)
function(kelvo_use_common_headers target)
    target_precompile_headers(${target} REUSE_FROM kelvo-common-headers)
endfunction()

# kelvo_require_package(<prefix> <pkg-config module> ...)
# A foreign library: PkgConfig::<prefix>. Without its "-pthread", which defines a macro that the precompiled headers
# were made without; for compiling it means nothing else.
function(kelvo_require_package prefix)
    pkg_check_modules(${prefix} REQUIRED IMPORTED_TARGET GLOBAL ${ARGN})
    set_target_properties(PkgConfig::${prefix} PROPERTIES INTERFACE_COMPILE_OPTIONS "")
endfunction()

# kelvo_add_library(<name> SOURCES ... [PUBLIC libs...] [PRIVATE libs...] [PACKAGE name])
# A shared library of the boundary. Its headers are included by their plain names. With PACKAGE builds of others have it
# as Kelvo::<name of PACKAGE>.
function(kelvo_add_library name)
    cmake_parse_arguments(ARG "" "PACKAGE" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
    add_library(${name} SHARED ${ARG_SOURCES})
    target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}>)
    target_link_libraries(${name} PUBLIC ${ARG_PUBLIC} PRIVATE kelvo-options ${ARG_PRIVATE})
    string(REPLACE "-" "_" define ${name})
    string(TOUPPER ${define} define)
    target_compile_definitions(${name} PRIVATE ${define}_BUILD)
    set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
    kelvo_set_run_path(${name} ${CMAKE_INSTALL_LIBDIR} ${CMAKE_INSTALL_LIBDIR})
    kelvo_use_common_headers(${name})
    if(ARG_PACKAGE)
        kelvo_install_package(${name} ${ARG_PACKAGE})
    else()
        install(TARGETS ${name} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} NAMELINK_SKIP)
    endif()
endfunction()

# kelvo_add_parts(<name> SOURCES ... [PUBLIC libs...] [PRIVATE libs...] [PRECOMPILED headers...])
# A static library: everything of a plug-in but its root object, so that tests can reach the parts, or what several
# libraries share and each has a copy of. Its headers are included by their plain names. PRECOMPILED names the headers
# that it precompiles for itself, in the place of those that all share. What uses it outside of this build has the
# options of its own (kelvo_install_parts).
function(kelvo_add_parts name)
    cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE;PRECOMPILED" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}>)
    target_link_libraries(${name} PUBLIC ${ARG_PUBLIC} PRIVATE $<BUILD_INTERFACE:kelvo-options> ${ARG_PRIVATE})
    if(ARG_PRECOMPILED)
        target_precompile_headers(${name} PRIVATE ${ARG_PRECOMPILED})
    else()
        kelvo_use_common_headers(${name})
    endif()
endfunction()

# kelvo_add_plugin(<name> SOURCES ... [LIBS libs...])
# A back end in the plug-in folder.
function(kelvo_add_plugin name)
    kelvo_add_plugin_module(${name} ${ARGN})
    target_link_libraries(${name} PRIVATE kelvo-options)
    set_target_properties(${name} PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${KELVO_PLUGIN_OUTPUT_DIR})
    kelvo_set_run_path(${name} ${KELVO_PLUGIN_INSTALL_DIR} ${CMAKE_INSTALL_LIBDIR})
    kelvo_use_common_headers(${name})
    install(TARGETS ${name} LIBRARY DESTINATION ${KELVO_PLUGIN_INSTALL_DIR})
    set_property(GLOBAL APPEND PROPERTY KELVO_PLUGINS ${name})
endfunction()

# kelvo_add_benchmark(<name> SOURCES ... [LIBS libs...])
# A program that prints rows of docs/benchmarks.md.
function(kelvo_add_benchmark name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/benchmarks/support)
    target_link_libraries(${name} PRIVATE kelvo-options ${ARG_LIBS})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/benchmarks)
endfunction()
