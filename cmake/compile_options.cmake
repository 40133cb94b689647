# SPDX-License-Identifier: MIT
# Language, warnings, hardening and sanitizers of everything that is compiled.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

# Sanitizers are for every target, GoogleTest included.
set(sanitize_address -fsanitize=address,undefined,float-cast-overflow -fno-sanitize-recover=all -fno-omit-frame-pointer)
set(sanitize_thread -fsanitize=thread)
set(sanitize_fuzz -fsanitize=fuzzer-no-link ${sanitize_address})
set(sanitize_trap -fsanitize=undefined,float-cast-overflow -fsanitize-undefined-trap-on-error)
if(PERCUSSOMATIC_SANITIZE)
    if(NOT DEFINED sanitize_${PERCUSSOMATIC_SANITIZE})
        message(FATAL_ERROR "PERCUSSOMATIC_SANITIZE is \"${PERCUSSOMATIC_SANITIZE}\"; expected address, thread, fuzz or trap")
    endif()
    add_compile_options("$<$<COMPILE_LANGUAGE:C,CXX>:${sanitize_${PERCUSSOMATIC_SANITIZE}}>")
    if(NOT PERCUSSOMATIC_SANITIZE STREQUAL "trap") # which needs no library
        add_link_options(${sanitize_${PERCUSSOMATIC_SANITIZE}})
    endif()
endif()

# Flags of our own code. Bit-exactness: no contraction into fused operations, never fast-math.
add_library(percussomatic_flags INTERFACE)
target_compile_options(percussomatic_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -ffp-contract=off
    -ffile-prefix-map=${CMAKE_SOURCE_DIR}=. -ffile-prefix-map=${CMAKE_BINARY_DIR}=build
    -ffile-prefix-map=${PERCUSSOMATIC_SHARED_DIR}=build)
target_link_libraries(percussomatic_flags INTERFACE Threads::Threads)

# Hardening against hostile files. Fortified functions need optimised code and the unsanitized library.
target_compile_options(percussomatic_flags INTERFACE -fstack-protector-strong)
target_link_options(percussomatic_flags INTERFACE -fstack-protector-strong)
if(NOT PERCUSSOMATIC_SANITIZE MATCHES "address|thread|fuzz")
    target_compile_options(percussomatic_flags INTERFACE $<$<CONFIG:Release>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
endif()

if(PERCUSSOMATIC_COUNT_OWNED)
    target_compile_definitions(percussomatic_flags INTERFACE PERCUSSOMATIC_COUNT_OWNED)
endif()

if(WIN32)
    target_compile_definitions(percussomatic_flags INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN
        _WIN32_WINNT=0x0601 WINVER=0x0601)
    # The released programs: one file each, the same bytes with every build, loaded at any address.
    # Sections begin on a page of the file; otherwise Wine copies the 57 MB of pictures and recordings.
    # This linker has no control flow guard.
    set(program_link_options -static -municode -s
        LINKER:--no-insert-timestamp,--dynamicbase,--high-entropy-va,--nxcompat,--file-alignment=4096)

    # What Windows shows about a program's file.
    enable_language(RC)
    set(version_resource_template ${CMAKE_CURRENT_LIST_DIR}/version.rc.in)
    function(add_version_resource target description)
        configure_file(${version_resource_template} ${target}_version.rc @ONLY)
        target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc)
    endfunction()
endif()
