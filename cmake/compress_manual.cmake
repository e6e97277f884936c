# Debian's manual pages are compressed; no time stamp, so that the same page gives the same file.
file(GLOB pages ${CPACK_TEMPORARY_DIRECTORY}/*${CPACK_PACKAGING_INSTALL_PREFIX}/share/man/man1/*.1)
foreach(page ${pages})
    execute_process(COMMAND gzip -9n ${page} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
