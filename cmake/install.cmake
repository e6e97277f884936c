# cmake --install, find_package(vrl) and pkg-config.

include(CMakePackageConfigHelpers)

set(VRL_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/vrl)
set(VRL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/vrl)

set(installed_targets vrl)
if(TARGET vrl_refhost)
    list(APPEND installed_targets vrl_refhost)
endif()
install(TARGETS ${installed_targets} EXPORT vrlTargets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    INCLUDES DESTINATION ${VRL_INCLUDE_DIR})
if(TARGET vrl_tool)
    install(TARGETS vrl_tool RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

install(DIRECTORY src/api src/base src/host DESTINATION ${VRL_INCLUDE_DIR} FILES_MATCHING PATTERN "*.h")
install(FILES refhost/refhost.h DESTINATION ${VRL_INCLUDE_DIR}/refhost)
install(FILES refhost/services/reports.h DESTINATION ${VRL_INCLUDE_DIR}/refhost/services)

install(EXPORT vrlTargets NAMESPACE vrl:: DESTINATION ${VRL_CMAKE_DIR})
configure_package_config_file(cmake/vrlConfig.cmake.in ${PROJECT_BINARY_DIR}/vrlConfig.cmake INSTALL_DESTINATION ${VRL_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vrlConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vrlConfig.cmake ${PROJECT_BINARY_DIR}/vrlConfigVersion.cmake DESTINATION ${VRL_CMAKE_DIR})

foreach(module vrl vrl-refhost)
    configure_file(cmake/${module}.pc.in ${PROJECT_BINARY_DIR}/${module}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${module}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
