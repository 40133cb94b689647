# Called by CPack when the files to pack lie in a folder of their own: makes the archive and, for
# Windows, the installer.

set(staged ${CPACK_TEMPORARY_DIRECTORY})
set(packages ${CPACK_TOPLEVEL_DIRECTORY}/${CPACK_PACKAGE_FILE_NAME})
if(CPACK_PERCUSSOMATIC_WINDOWS)
    string(APPEND packages .zip)
else()
    string(APPEND packages .tar.gz)
endif()
execute_process(
    COMMAND /usr/bin/python3 ${CPACK_PERCUSSOMATIC_SOURCE}/packaging/archive.py ${staged} ${packages}
    COMMAND_ERROR_IS_FATAL ANY)

if(CPACK_PERCUSSOMATIC_WINDOWS)
    set(setup ${CPACK_TOPLEVEL_DIRECTORY}/${CPACK_PACKAGE_NAME}-${CPACK_PACKAGE_VERSION}-setup.exe)
    # Beside the first and the last page: the card reader, from the picture of the panel.
    set(side ${CPACK_TOPLEVEL_DIRECTORY}/side.bmp)
    execute_process(
        COMMAND convert ${CPACK_PERCUSSOMATIC_SOURCE}/docs/pictures/panel.jpg -resize x330
            -gravity NorthEast -crop 164x314+8+8 +repage BMP3:${side}
        COMMAND_ERROR_IS_FATAL ANY)
    execute_process(
        COMMAND makensis -V2 -WX -NOCD -DVERSION=${CPACK_PACKAGE_VERSION} -DSTAGED=${staged} -DSETUP=${setup}
            -DICON=${CPACK_PERCUSSOMATIC_SOURCE}/assets/artwork/png/AppIcon.ico -DSIDE=${side}
            ${CPACK_PERCUSSOMATIC_SOURCE}/packaging/installer.nsi
        COMMAND_ERROR_IS_FATAL ANY)
    list(APPEND packages ${setup})
endif()
set(CPACK_EXTERNAL_BUILT_PACKAGES ${packages})
