# SPDX-License-Identifier: MIT
# The program's tables for everything that is not written in C++: tools/print_tables prints them as
# panel.json, for the artwork and the end-to-end tests, and the build reads its list of recordings from it.

find_program(PERCUSSOMATIC_HOST_CXX NAMES c++ g++ clang++ REQUIRED
    DOC "Compiler for tools that run during the build")

set(core ${CMAKE_SOURCE_DIR}/src/core)
set(table_sources ${CMAKE_SOURCE_DIR}/tools/print_tables/main.cpp ${core}/panel/control_geometry.cpp
    ${core}/panel/control_state.cpp ${core}/panel/control_table.cpp)
file(GLOB table_headers CONFIGURE_DEPENDS ${core}/pattern/*.h ${core}/panel/*.h ${core}/graphics/pixel_rect.h)
set(panel_tables ${PERCUSSOMATIC_SHARED_DIR}/panel.json)
set_property(DIRECTORY ${CMAKE_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
    ${table_sources} ${table_headers} ${panel_tables})

set(outdated OFF)
foreach(source IN LISTS table_sources table_headers)
    if(${source} IS_NEWER_THAN ${panel_tables})
        set(outdated ON)
    endif()
endforeach()
if(outdated)
    file(MAKE_DIRECTORY ${PERCUSSOMATIC_SHARED_DIR})
    set(print_tables ${PERCUSSOMATIC_SHARED_DIR}/print_tables${CMAKE_HOST_EXECUTABLE_SUFFIX})
    execute_process(COMMAND ${PERCUSSOMATIC_HOST_CXX} -std=c++20 -I${core} -o ${print_tables} ${table_sources}
        COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND ${print_tables} OUTPUT_FILE ${panel_tables}.new COMMAND_ERROR_IS_FATAL ANY)
    file(RENAME ${panel_tables}.new ${panel_tables})
endif()

file(READ ${panel_tables} tables)
set(recording_names "")
string(JSON instrument_count LENGTH ${tables} instruments)
math(EXPR last_instrument "${instrument_count} - 1")
foreach(index RANGE ${last_instrument})
    string(JSON name GET ${tables} instruments ${index} recording)
    list(APPEND recording_names ${name})
endforeach()
