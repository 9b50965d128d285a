# SPDX-License-Identifier: MIT
cmake_minimum_required(VERSION 3.25)
# cmake -DREVISION=... -DGIT=... -DSOURCE_DIR=... -DOUTPUT=... -P WriteRevision.cmake
# Writes the revision, where none is given that of the working copy, into the file, unless the file says so already.
if(NOT REVISION AND GIT)
    execute_process(COMMAND ${GIT} describe --always --dirty
        WORKING_DIRECTORY ${SOURCE_DIR}
        OUTPUT_VARIABLE REVISION OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
file(CONFIGURE OUTPUT ${OUTPUT} CONTENT "@REVISION@" @ONLY)
