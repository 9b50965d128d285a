# SPDX-License-Identifier: MIT
# What makes a loadable back end of a target, in this build and in those of others (see KelvoConfig.cmake.in).

# kelvo_add_plugin_module(<name> SOURCES ... [LIBS libs...])
# A library that is loaded at run time and named by its file: <name>.so.
function(kelvo_add_plugin_module name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
    add_library(${name} MODULE ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE Kelvo::Core ${ARG_LIBS})
    set_target_properties(${name} PROPERTIES
        PREFIX "" AUTOMOC ON CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
endfunction()
