# SPDX-License-Identifier: MIT
cmake_minimum_required(VERSION 3.25)
# cmake -DREVISION_FILE=... -DTEMPLATE=... -DOUTPUT=... -P WriteBuildSource.cmake
# Fills the revision and the present time, as the date command writes it, into the template.
file(READ ${REVISION_FILE} KELVO_REVISION)
set(date date)
if(DEFINED ENV{SOURCE_DATE_EPOCH})
    # The same on every machine.
    set(date ${CMAKE_COMMAND} -E env LC_ALL=C date --utc --date=@$ENV{SOURCE_DATE_EPOCH})
endif()
execute_process(COMMAND ${date}
    OUTPUT_VARIABLE KELVO_BUILD_TIME OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
configure_file(${TEMPLATE} ${OUTPUT} @ONLY)
# Also where the text is the same: it is as new as what it depends on.
file(TOUCH ${OUTPUT})
