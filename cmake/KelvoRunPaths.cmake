# SPDX-License-Identifier: MIT
# How programs and libraries find ours: by their own place, which is the same in the build folder as where they are
# installed, so that nothing names the folder that it was built in. What is installed where the system looks by itself
# has no such entry.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(KELVO_SYSTEM_LIBRARIES OFF)
if(CMAKE_INSTALL_FULL_LIBDIR IN_LIST CMAKE_CXX_IMPLICIT_LINK_DIRECTORIES)
    set(KELVO_SYSTEM_LIBRARIES ON)
endif()

# kelvo_set_run_path(<target> <its folder> <folder of the libraries>)
# Of a target that is installed; both folders are told below the prefix.
function(kelvo_set_run_path target from to)
    if(KELVO_SYSTEM_LIBRARIES)
        set_target_properties(${target} PROPERTIES INSTALL_RPATH "")
        return()
    endif()
    cmake_path(RELATIVE_PATH to BASE_DIRECTORY ${from} OUTPUT_VARIABLE way)
    set(run_path $ORIGIN/${way})
    string(REGEX REPLACE "/\\.?$" "" run_path ${run_path})
    set_target_properties(${target} PROPERTIES INSTALL_RPATH ${run_path})
    if(CMAKE_INSTALL_LIBDIR STREQUAL lib)
        # Linked with it at once: an entry that is replaced at installation ends with an empty one, which means the
        # current folder.
        set_target_properties(${target} PROPERTIES BUILD_WITH_INSTALL_RPATH ON)
    endif()
endfunction()
