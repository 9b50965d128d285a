# SPDX-License-Identifier: MIT
# The revision and time of the build, which the programs write to their logs and recordings.
find_package(Git QUIET)
set(KELVO_REVISION_SCRIPTS ${CMAKE_CURRENT_LIST_DIR})

# kelvo_add_build_library(<target> [DEPENDS files and targets...])
# Adds a library that tells them (KelvoBuild.h): the revision that is built, and the time at which the library was last
# made anew because of the revision or of what it depends on. A build that changes neither makes nothing anew. The revision is KELVO_REVISION or, where that is empty, git's; without both
# there is none. SOURCE_DATE_EPOCH is honoured.
function(kelvo_add_build_library target)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "DEPENDS")
    set(template ${KELVO_REVISION_SCRIPTS}/KelvoBuild.cpp.in)
    set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}.cpp)
    add_library(${target} STATIC ${KELVO_REVISION_SCRIPTS}/KelvoBuild.h)
    # Nothing else may be generated for what the revision is asked for.
    set_target_properties(${target} PROPERTIES AUTOMOC OFF AUTORCC OFF)
    target_include_directories(${target} PUBLIC ${KELVO_REVISION_SCRIPTS})
    set(revision ${CMAKE_CURRENT_BINARY_DIR}/${target}-revision.txt)
    # Asked by each build; the file is written when the answer has changed.
    add_custom_target(${target}-revision
        COMMAND ${CMAKE_COMMAND} -DREVISION=${KELVO_REVISION} -DGIT=${GIT_EXECUTABLE} -DSOURCE_DIR=${CMAKE_SOURCE_DIR}
            -DOUTPUT=${revision} -P ${KELVO_REVISION_SCRIPTS}/WriteRevision.cmake
        BYPRODUCTS ${revision} COMMENT "Asking for the revision" VERBATIM)
    add_custom_command(OUTPUT ${source}
        COMMAND ${CMAKE_COMMAND} -DREVISION_FILE=${revision} -DTEMPLATE=${template} -DOUTPUT=${source}
            -P ${KELVO_REVISION_SCRIPTS}/WriteBuildSource.cmake
        DEPENDS ${revision} ${template} ${KELVO_REVISION_SCRIPTS}/WriteBuildSource.cmake ${ARG_DEPENDS}
        COMMENT "Noting revision and time of the build" VERBATIM)
    add_dependencies(${target} ${target}-revision)
    target_sources(${target} PRIVATE ${source})
endfunction()
