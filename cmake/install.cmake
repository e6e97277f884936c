# cmake --install, find_package(vrl) and pkg-config.

include(CMakePackageConfigHelpers)

set(VRL_ZSH_COMPLETION_DIR ${CMAKE_INSTALL_DATADIR}/zsh/site-functions CACHE STRING "Where completion for zsh goes")

set(VRL_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/vrl)
set(VRL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/vrl)

install(TARGETS vrl vrl_refhost EXPORT vrlTargets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
    INCLUDES DESTINATION ${VRL_INCLUDE_DIR})

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME runtime)
if(TARGET vrl_tool)
    install(TARGETS vrl_tool RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
if(TARGET vrl_describe)
    set(described ${PROJECT_BINARY_DIR}/tool/described)
    install(FILES ${described}/vrl.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
    install(FILES ${described}/vrl.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME vrl)
    install(FILES ${described}/_vrl DESTINATION ${VRL_ZSH_COMPLETION_DIR})
    install(FILES ${described}/vrl.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endif()

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)

install(DIRECTORY src/api src/base src/host DESTINATION ${VRL_INCLUDE_DIR} FILES_MATCHING PATTERN "*.h")
install(FILES refhost/refhost.h DESTINATION ${VRL_INCLUDE_DIR}/refhost)
install(FILES refhost/services/reports.h DESTINATION ${VRL_INCLUDE_DIR}/refhost/services)
install(FILES refhost/shape/feather_points.h DESTINATION ${VRL_INCLUDE_DIR}/refhost/shape)

install(EXPORT vrlTargets NAMESPACE vrl:: DESTINATION ${VRL_CMAKE_DIR})
configure_package_config_file(cmake/vrlConfig.cmake.in ${PROJECT_BINARY_DIR}/vrlConfig.cmake INSTALL_DESTINATION ${VRL_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vrlConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vrlConfig.cmake ${PROJECT_BINARY_DIR}/vrlConfigVersion.cmake DESTINATION ${VRL_CMAKE_DIR})

# From a .pc file up to the prefix, so that the installed tree can be moved.
file(RELATIVE_PATH VRL_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
foreach(module vrl vrl-refhost)
    configure_file(cmake/${module}.pc.in ${PROJECT_BINARY_DIR}/${module}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${module}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
