# Windows looks for a program's DLLs beside it. The compiler's own are shared ones, so that exceptions, and memory that one
# side allocates and the other frees, pass between this library, its host and their callers.
if(NOT MINGW)
    return()
endif()
foreach(name libgcc_s_seh-1 libstdc++-6 libwinpthread-1)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}.dll OUTPUT_VARIABLE dll OUTPUT_STRIP_TRAILING_WHITESPACE)
    file(COPY ${dll} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
    install(FILES ${dll} DESTINATION ${CMAKE_INSTALL_BINDIR})
endforeach()
