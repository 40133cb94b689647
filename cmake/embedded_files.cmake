# The files that are compiled into the program: the pictures and icon kept in the repository, and what
# is made at build time, the recordings and smaller copies of the largest pictures. One assembly file of .incbin lines holds the bytes, one list of
# EMBEDDED_FILE(name, symbol) and REDUCED_PICTURE(name, halvings, symbol) lines names them for
# src/ui/assets.cpp.

set(recordings_dir ${CMAKE_SOURCE_DIR}/build/recordings)
set(recording_names bass_drum block_1 block_2 charleston clave cymbal_1 cymbal_2 rolling_snare snare
    timbal_1 timbal_2 triangle)

# They are made by tools that run on the building machine, whatever we build for; all presets share
# one set.
find_program(PERCUSSOMATIC_HOST_CXX NAMES c++ g++ clang++ REQUIRED
    DOC "Compiler for tools that run during the build")
file(GLOB make_recordings_sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tools/make_recordings/*.cpp)
file(GLOB make_recordings_headers CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tools/make_recordings/*.h)
set(make_recordings ${recordings_dir}/make_recordings)
if(CMAKE_HOST_WIN32)
    string(APPEND make_recordings .exe)
endif()
list(TRANSFORM recording_names REPLACE "(.+)" "${recordings_dir}/\\1.wav" OUTPUT_VARIABLE recording_files)
add_custom_command(
    OUTPUT ${make_recordings}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${recordings_dir}
    COMMAND ${PERCUSSOMATIC_HOST_CXX} -std=c++20 -O2 -ffp-contract=off -o ${make_recordings}
        ${make_recordings_sources}
    DEPENDS ${make_recordings_sources} ${make_recordings_headers}
    COMMENT "Compiling make_recordings" VERBATIM)
add_custom_command(
    OUTPUT ${recording_files}
    COMMAND ${make_recordings} ${recordings_dir}
    DEPENDS ${make_recordings}
    COMMENT "Making the twelve recordings" VERBATIM)
add_custom_target(percussomatic_recordings DEPENDS ${recording_files})

set(pictures_dir ${CMAKE_SOURCE_DIR}/assets/artwork/png)
set(reduced_dir ${CMAKE_SOURCE_DIR}/build/pictures)
set(reduced_names c_scheda.PNG mobile.PNG "pannello sotto.PNG" pannello_frontale.png)
list(TRANSFORM reduced_names PREPEND ${pictures_dir}/ OUTPUT_VARIABLE reduced_sources)
set(reduced_files "")
foreach(name IN LISTS reduced_names)
    list(APPEND reduced_files ${reduced_dir}/${name}.1 ${reduced_dir}/${name}.2)
endforeach()
set(reduce_pictures_sources ${CMAKE_SOURCE_DIR}/tools/reduce_pictures/main.cpp)
set(reducing_sources ${CMAKE_SOURCE_DIR}/src/ui/pixel_image.cpp ${CMAKE_SOURCE_DIR}/src/ui/control_layout.cpp
    ${CMAKE_SOURCE_DIR}/src/ui/control_layout_table.cpp)
set(reduce_pictures ${reduced_dir}/reduce_pictures)
if(CMAKE_HOST_WIN32)
    string(APPEND reduce_pictures .exe)
endif()
add_custom_command(
    OUTPUT ${reduce_pictures}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${reduced_dir}
    COMMAND ${PERCUSSOMATIC_HOST_CXX} -std=c++20 -O2 -I${CMAKE_SOURCE_DIR}/src -o ${reduce_pictures}
        ${reduce_pictures_sources} ${reducing_sources} -lpng
    DEPENDS ${reduce_pictures_sources} ${reducing_sources} ${CMAKE_SOURCE_DIR}/src/ui/pixel_lanes.h
    COMMENT "Compiling reduce_pictures" VERBATIM)
add_custom_command(
    OUTPUT ${reduced_files}
    COMMAND ${reduce_pictures} ${reduced_dir} ${reduced_sources}
    DEPENDS ${reduce_pictures} ${reduced_sources}
    COMMENT "Reducing the largest pictures" VERBATIM)
add_custom_target(percussomatic_pictures DEPENDS ${reduced_files})

# Sorted by upper-cased name: the order of the asset table.
set(embedded_names AppIcon.ico bass_drum.wav BIN_off.PNG BIN_onPNG.PNG block_1.wav block_2.wav
    bottone_off.PNG bottone_on.PNG charleston.wav clave.wav cymbal_1.wav cymbal_2.wav c_scheda.PNG
    hole.PNG mobile.PNG "pannello sotto.PNG" pannello_frontale.png pounch.PNG PW_off.PNG PW_on.PNG
    rolling_snare.wav rotary.PNG slider.PNG snare.wav SW_off.PNG SW_on.PNG timbal_1.wav timbal_2.wav
    triangle.wav)

set(embedded_files_include ${CMAKE_BINARY_DIR}/embedded)
set(embedded_files_source ${embedded_files_include}/embedded_files.S)
set(assembly "")
set(names "")
set(inputs "")
set(index 0)
foreach(name IN LISTS embedded_names reduced_files)
    if(name MATCHES "^${reduced_dir}/(.+)[.]([12])$")
        set(path ${name})
        set(entry "REDUCED_PICTURE(\"${CMAKE_MATCH_1}\", ${CMAKE_MATCH_2}")
    elseif(name MATCHES "\\.wav$")
        set(path ${recordings_dir}/${name})
        set(entry "EMBEDDED_FILE(\"${name}\"")
    else()
        set(path ${pictures_dir}/${name})
        set(entry "EMBEDDED_FILE(\"${name}\"")
    endif()
    list(APPEND inputs ${path})
    set(symbol embedded_file_${index})
    string(APPEND assembly ".balign 16\n.globl ${symbol}\n${symbol}:\n.incbin \"${path}\"\n"
        ".globl ${symbol}_end\n${symbol}_end:\n.byte 0\n")
    string(APPEND names "${entry}, ${symbol})\n")
    math(EXPR index "${index} + 1")
endforeach()
if(WIN32)
    set(section ".section .rdata,\"dr\"\n")
else()
    set(section ".section .note.GNU-stack,\"\",%progbits\n.section .rodata\n")
endif()
file(CONFIGURE OUTPUT ${embedded_files_source} CONTENT "${section}${assembly}" @ONLY)
file(CONFIGURE OUTPUT ${embedded_files_include}/embedded_files.inc CONTENT "${names}" @ONLY)
set_source_files_properties(${embedded_files_source} PROPERTIES OBJECT_DEPENDS "${inputs}")
