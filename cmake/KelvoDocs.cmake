# SPDX-License-Identifier: MIT
# The target "docs": the reference of the API as pages, api/html in the build folder. Needs Doxygen, and is not built by
# default. A header without a comment for something that is public is an error.
find_program(KELVO_DOXYGEN doxygen)
set(KELVO_API_DIR ${CMAKE_BINARY_DIR}/api)
get_property(headers GLOBAL PROPERTY KELVO_PACKAGE_HEADERS)
list(TRANSFORM headers PREPEND "\"" OUTPUT_VARIABLE quoted)
list(TRANSFORM quoted APPEND "\"")
list(APPEND quoted "\"${CMAKE_SOURCE_DIR}/docs/plug-in-authors.md\"")
list(JOIN quoted " " KELVO_API_INPUT)
configure_file(${CMAKE_SOURCE_DIR}/docs/Doxyfile.in ${KELVO_API_DIR}/Doxyfile @ONLY)
if(KELVO_DOXYGEN)
    add_custom_target(docs COMMAND ${KELVO_DOXYGEN} ${KELVO_API_DIR}/Doxyfile
        SOURCES ${CMAKE_SOURCE_DIR}/docs/Doxyfile.in COMMENT "Writing ${KELVO_API_DIR}/html" VERBATIM)
endif()
