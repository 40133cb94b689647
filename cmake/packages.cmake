# SPDX-License-Identifier: MIT
# What players are given: the install rules, from which ./package lets CPack make the archives and the installer.

set(manual_chapters ${CMAKE_SOURCE_DIR}/docs/manual.md ${CMAKE_SOURCE_DIR}/docs/midi.md
    ${CMAKE_SOURCE_DIR}/docs/companion-tool.md ${CMAKE_SOURCE_DIR}/docs/card-format.md)
file(GLOB manual_pictures CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/docs/pictures/*)
set(manual_maker ${CMAKE_SOURCE_DIR}/packaging/make_manual.py)
set(manual ${CMAKE_BINARY_DIR}/Manual.html)
add_custom_command(
    OUTPUT ${manual}
    COMMAND ${Python3_EXECUTABLE} ${manual_maker} ${PROJECT_VERSION} ${manual} ${manual_chapters}
    DEPENDS ${manual_maker} ${CMAKE_SOURCE_DIR}/packaging/manual.css ${manual_chapters} ${manual_pictures}
    COMMENT "Making the manual" VERBATIM)
add_custom_target(manual DEPENDS ${manual})

install(TARGETS percussomatic-card RUNTIME DESTINATION .)
install(FILES ${manual} DESTINATION .)
install(FILES LICENSE DESTINATION . RENAME LICENSE.txt)
install(DIRECTORY assets/cards/ DESTINATION FactoryCards FILES_MATCHING PATTERN "*.vopcard")
if(WIN32)
    install(TARGETS Percussomatic RUNTIME DESTINATION .)
    install(FILES packaging/libraries.txt DESTINATION . RENAME LICENSE-libraries.txt)
    # Seven rhythms to begin with and three free slots.
    install(DIRECTORY assets/cards/ DESTINATION PunchCards FILES_MATCHING PATTERN "card_[1-7].vopcard")
    set(CPACK_PACKAGE_FILE_NAME ${PROJECT_NAME}-${PROJECT_VERSION}-win64)
else()
    set(CPACK_PACKAGE_FILE_NAME percussomatic-card-${PROJECT_VERSION}-linux-${CMAKE_SYSTEM_PROCESSOR})
endif()

# The archives of CPack itself depend on the order of folders and on the user who packs; ours do not.
set(CPACK_GENERATOR External)
set(CPACK_EXTERNAL_ENABLE_STAGING ON)
set(CPACK_EXTERNAL_PACKAGE_SCRIPT ${CMAKE_SOURCE_DIR}/packaging/pack.cmake)
set(CPACK_PERCUSSOMATIC_SOURCE ${CMAKE_SOURCE_DIR})
set(CPACK_PERCUSSOMATIC_WINDOWS ${WIN32})
set(CPACK_PACKAGE_VENDOR "Percussomatic developers")
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
