# SPDX-License-Identifier: MIT
# The revision and time of the build, which the console writes to its log at start.
find_package(Git QUIET)
set(KELVO_REVISION_SCRIPTS ${CMAKE_CURRENT_LIST_DIR})

# kelvo_add_build_source(<target> <template> [DEPENDS files and targets...])
# Adds a source made of the template to the target, for which nothing else may be generated: with the revision that is
# built, and the time at which the source was last made anew because of the revision or of what it depends on. A build
# that changes neither makes nothing anew. The revision is KELVO_REVISION or, where that is empty, git's; without both
# there is none. SOURCE_DATE_EPOCH is honoured.
function(kelvo_add_build_source target template)
    cmake_parse_arguments(PARSE_ARGV 2 ARG "" "" "DEPENDS")
    cmake_path(ABSOLUTE_PATH template)
    cmake_path(GET template STEM LAST_ONLY name)
    set(source ${CMAKE_CURRENT_BINARY_DIR}/${name})
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
