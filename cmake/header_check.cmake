# Every header is compiled alone, so that none leans on what its users happen to include before it.
# The shell's headers need the system's, and are checked where it is built.

if(CMAKE_CXX_FLAGS_RELEASE MATCHES "fsanitize")
    return() # checked in the builds without sanitizers
endif()

file(GLOB headers RELATIVE ${CMAKE_SOURCE_DIR}/src CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/*/*.h)
if(NOT WIN32)
    list(TRANSFORM shell_sources REPLACE "^src/(.+)\\.cpp$" "\\1.h" OUTPUT_VARIABLE shell_headers)
    list(REMOVE_ITEM headers ${shell_headers} ui/gdiplus_flat.h ui/owned.h)
endif()

set(lone_headers "")
foreach(header IN LISTS headers)
    set(source ${CMAKE_BINARY_DIR}/header_check/${header}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "#include \"${header}\"\n" @ONLY)
    list(APPEND lone_headers ${source})
endforeach()
add_library(header_check OBJECT ${lone_headers})
target_link_libraries(header_check PRIVATE percussomatic_flags)
set_target_properties(header_check PROPERTIES CXX_CLANG_TIDY "")
