# SPDX-License-Identifier: MIT
# Compiles every header alone, so that none depends on what its users happen to include before it. Headers
# of the Windows layer are compiled where it is built.

if(PERCUSSOMATIC_SANITIZE)
    return() # checked in the builds without sanitizers
endif()

file(GLOB_RECURSE headers RELATIVE ${CMAKE_SOURCE_DIR}/src CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/*.h)
if(NOT WIN32)
    list(FILTER headers EXCLUDE REGEX "^win32/")
endif()

set(lone_headers "")
foreach(header IN LISTS headers)
    string(REGEX REPLACE "^(core|platform)/" "" spelling ${header})
    set(source ${CMAKE_BINARY_DIR}/header_check/${header}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "#include \"${spelling}\"\n" @ONLY)
    list(APPEND lone_headers ${source})
endforeach()
add_library(header_check OBJECT ${lone_headers})
target_link_libraries(header_check PRIVATE percussomatic_flags)
target_include_directories(header_check PRIVATE src/core src/platform)
if(WIN32)
    target_include_directories(header_check PRIVATE src)
endif()
