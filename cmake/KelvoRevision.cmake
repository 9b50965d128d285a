# SPDX-License-Identifier: MIT
# The revision and build time that the console writes to its log at start. Both are taken when the build is
# configured or its revision changes; a build without git has no revision.
if(NOT KELVO_REVISION)
    find_package(Git QUIET)
    if(Git_FOUND)
        execute_process(COMMAND ${GIT_EXECUTABLE} describe --always --dirty
            WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
            OUTPUT_VARIABLE KELVO_REVISION OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    endif()
endif()
execute_process(COMMAND date OUTPUT_VARIABLE KELVO_BUILD_TIME OUTPUT_STRIP_TRAILING_WHITESPACE)
