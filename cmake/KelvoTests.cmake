# SPDX-License-Identifier: MIT
# The functions that add tests and what they are made of. A test carries the name of its layer, the folder of tests/
# that it lies in, as its label: KELVO_TEST_LAYER, which tests/CMakeLists.txt sets for each folder.

# For tests that load libraries without frame pointers: tells whose a leak is, which costs five times the run time. Each
# caller that is told of costs the same; fewer would not reach from GObject's innermost functions to what makes the object.
set(KELVO_TRACED_LEAKS "ASAN_OPTIONS=fast_unwind_on_malloc=0:malloc_context_size=14:detect_leaks=1")
# Most of them look for leaks only when asked to; some always do, so that each part is looked at.
option(KELVO_TRACE_ALL_LEAKS "Look for leaks in all tests that play media" OFF)
if(KELVO_TRACE_ALL_LEAKS)
    set(KELVO_MEDIA_LEAKS ${KELVO_TRACED_LEAKS})
else()
    set(KELVO_MEDIA_LEAKS "ASAN_OPTIONS=detect_leaks=0")
endif()
# What the thread sanitizer reports goes into files of this folder, one for each process: not all that tests start is
# heard.
set(KELVO_THREAD_REPORTS ${CMAKE_BINARY_DIR}/thread-reports)
if(KELVO_SANITIZE MATCHES thread)
    file(MAKE_DIRECTORY ${KELVO_THREAD_REPORTS})
endif()
string(JOIN ":" KELVO_THREAD_WATCH
    # See there what is overlooked, and why.
    ignore_noninstrumented_modules=1 suppressions=${CMAKE_SOURCE_DIR}/tests/support/tsan.supp print_suppressions=0
    # It knows pthread's locks alone, and most here are others.
    detect_deadlocks=0
    # A crash is a matter of our own handler, and ends the test without this, too.
    handle_segv=0 handle_sigbus=0 handle_sigfpe=0
    log_path=${KELVO_THREAD_REPORTS}/report log_exe_name=1)
# What the sanitizers are told in each test.
set(KELVO_SANITIZER_ENVIRONMENT
    "LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/support/lsan.supp:print_suppressions=0"
    "UBSAN_OPTIONS=print_stacktrace=1"
    "TSAN_OPTIONS=${KELVO_THREAD_WATCH}")

# The tests that preset "tsan" builds, as target thread-tests, and runs, by label "threads": those of our own threads.
# Elsewhere the threads are those of the media library, which is built without the sanitizer. unit-plugin-cycles measures
# memory, most of which would be the sanitizer's.
add_custom_target(thread-tests)
function(kelvo_is_thread_test result name)
    set(${result} FALSE PARENT_SCOPE)
    if(name MATCHES "^(unit-|model-|contract-simulator|integration-(tracker|shared)-)"
        AND NOT name STREQUAL unit-plugin-cycles AND KELVO_SANITIZE MATCHES thread)
        set(${result} TRUE PARENT_SCOPE)
    endif()
endfunction()

# kelvo_add_command_test(<name> COMMAND program and arguments [ENVIRONMENT VAR=value ...] [LABELS further ones ...]
#     [PROPERTIES CTest's properties and values ...])
# A test that is a command, as it is. What is known to take long begins early (tests/seconds.cmake).
function(kelvo_add_command_test name)
    cmake_parse_arguments(ARG "" "" "COMMAND;ENVIRONMENT;LABELS;PROPERTIES" ${ARGN})
    set(labels ${KELVO_TEST_LAYER} ${ARG_LABELS})
    kelvo_is_thread_test(watches_threads ${name})
    if(watches_threads)
        list(APPEND labels threads)
    endif()
    list(REMOVE_DUPLICATES labels)
    add_test(NAME ${name} COMMAND ${ARG_COMMAND})
    list(FIND KELVO_TEST_SECONDS ${name} at)
    if(NOT at EQUAL -1)
        math(EXPR at "${at} + 1")
        list(GET KELVO_TEST_SECONDS ${at} seconds)
        set_tests_properties(${name} PROPERTIES COST ${seconds})
    endif()
    set_tests_properties(${name} PROPERTIES LABELS "${labels}" ENVIRONMENT "${ARG_ENVIRONMENT}" ${ARG_PROPERTIES})
endfunction()

# kelvo_begin_first(<test>)
# It begins before all that are not told so, the longest of them first: those of which few run at a time decide how long
# all tests take, and the others fit beside them.
function(kelvo_begin_first test)
    get_test_property(${test} COST seconds)
    if(NOT seconds)
        set(seconds 0)
    endif()
    math(EXPR seconds "${seconds} + 100")
    set_tests_properties(${test} PROPERTIES COST ${seconds})
endfunction()

# kelvo_add_python_test(<name> <script> [ARGUMENTS ...] [ENVIRONMENT VAR=value ...] [PROPERTIES ...])
# A test that is a script in Python, which leaves no compiled copy beside it.
function(kelvo_add_python_test name script)
    cmake_parse_arguments(ARG "" "" "ARGUMENTS;ENVIRONMENT;PROPERTIES" ${ARGN})
    find_package(Python3 REQUIRED COMPONENTS Interpreter)
    kelvo_add_command_test(${name}
        COMMAND ${Python3_EXECUTABLE} -B ${CMAKE_CURRENT_SOURCE_DIR}/${script} ${ARG_ARGUMENTS}
        ENVIRONMENT ${ARG_ENVIRONMENT} PROPERTIES ${ARG_PROPERTIES})
endfunction()

# kelvo_add_test_library(<name> SOURCES ... [PUBLIC libs...] [PRIVATE libs...])
# What several test programs share. Its headers are included by their plain names.
function(kelvo_add_test_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
    target_link_libraries(${name} PUBLIC kelvo-test-support ${ARG_PUBLIC} PRIVATE kelvo-options ${ARG_PRIVATE})
    target_precompile_headers(${name} REUSE_FROM kelvo-test-support)
endfunction()

# kelvo_add_test_plugin(<name> FOLDER folder SOURCES ... [LIBS ...])
# A back end for tests only, kept out of the plug-in folder of the build.
function(kelvo_add_test_plugin name)
    cmake_parse_arguments(ARG "" "FOLDER" "SOURCES;LIBS" ${ARGN})
    kelvo_add_plugin_module(${name} SOURCES ${ARG_SOURCES} LIBS kelvo-options ${ARG_LIBS})
    set_target_properties(${name} PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${ARG_FOLDER})
endfunction()

# kelvo_add_test_program(<name> SOURCES ... [LIBS ...])
# A program that tests start.
function(kelvo_add_test_program name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE kelvo-options ${ARG_LIBS})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
endfunction()

# Puts the sources of a test, and what they need, into a program; the first call adds the program.
function(kelvo_add_test_sources program)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
    if(NOT TARGET ${program})
        kelvo_add_test_program(${program} LIBS kelvo-test-support Qt6::Test)
        if("kelvo-console-test-support" IN_LIST ARG_LIBS)
            target_precompile_headers(${program} REUSE_FROM kelvo-console-test-support)
        else()
            target_precompile_headers(${program} REUSE_FROM kelvo-test-support)
        endif()
    endif()
    target_sources(${program} PRIVATE ${ARG_SOURCES})
    target_link_libraries(${program} PRIVATE ${ARG_LIBS})
endfunction()

# kelvo_add_test_run(<name> PROGRAM target [ARGUMENTS ...] [ENVIRONMENT VAR=value ...] [LABELS ...] [TIMEOUT seconds]
#     [BUS] [WRAPPER program and arguments])
# A run of a test program, offscreen in private folders of its own; BUS gives it a private session bus too. WRAPPER is
# what starts the program. Of a variable that is named twice the last value counts.
function(kelvo_add_test_run name)
    cmake_parse_arguments(ARG "BUS" "PROGRAM;TIMEOUT" "ARGUMENTS;ENVIRONMENT;LABELS;WRAPPER" ${ARGN})
    set(bus "")
    if(ARG_BUS)
        set(bus --bus)
    endif()
    kelvo_add_command_test(${name}
        COMMAND ${CMAKE_SOURCE_DIR}/tests/support/run-isolated.sh ${bus} ${ARG_WRAPPER} $<TARGET_FILE:${ARG_PROGRAM}>
            ${ARG_ARGUMENTS}
        LABELS ${ARG_LABELS}
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen" "ASAN_OPTIONS=detect_leaks=1" ${KELVO_SANITIZER_ENVIRONMENT}
            "KELVO_PLUGIN_PATH=${KELVO_PLUGIN_OUTPUT_DIR}" ${ARG_ENVIRONMENT})
    if(ARG_TIMEOUT)
        set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT})
    endif()
    kelvo_is_thread_test(watches_threads ${name})
    if(watches_threads)
        add_dependencies(thread-tests ${ARG_PROGRAM})
    endif()
endfunction()

# kelvo_add_test(<name> SOURCES ... [GROUP program] [LIBS ...] [ENVIRONMENT ...] [LABELS ...] [TIMEOUT ...] [BUS]
#     [WRAPPER ...])
# A Qt Test program and its run, told as above. With GROUP the test class, named as its first source, shares a program
# with others (see support/TestGroup.h).
function(kelvo_add_test name)
    cmake_parse_arguments(ARG "BUS" "GROUP;TIMEOUT" "SOURCES;LIBS;ENVIRONMENT;LABELS;WRAPPER" ${ARGN})
    set(program ${name})
    set(class "")
    if(ARG_GROUP)
        set(program ${ARG_GROUP})
        list(GET ARG_SOURCES 0 class)
        cmake_path(GET class STEM class)
        list(APPEND ARG_LIBS kelvo-test-group)
    endif()
    kelvo_add_test_sources(${program} SOURCES ${ARG_SOURCES} LIBS ${ARG_LIBS})
    if(ARG_GROUP)
        # So that what a test needs is built by its own name.
        add_custom_target(${name} DEPENDS ${program})
    endif()
    set(bus "")
    if(ARG_BUS)
        set(bus BUS)
    endif()
    kelvo_add_test_run(${name} ${bus} PROGRAM ${program} ARGUMENTS ${class} ENVIRONMENT ${ARG_ENVIRONMENT}
        LABELS ${ARG_LABELS} TIMEOUT ${ARG_TIMEOUT} WRAPPER ${ARG_WRAPPER})
endfunction()
