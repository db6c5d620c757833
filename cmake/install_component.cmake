# What a host is built against: one header, which is the component's with the runtime's in place of its include; and
# what is installed of the library: the component, its runtime, that header, the type library's source and a package
# for CMake and for pkg-config. The classes behind the component stay private.
include(CMakePackageConfigHelpers)

set(runtime_header ${PROJECT_SOURCE_DIR}/platform/component_runtime.h)
set(component_header ${PROJECT_SOURCE_DIR}/automation/component/OPaneCommDLL.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${runtime_header} ${component_header})
file(READ ${runtime_header} runtime_text)
file(READ ${component_header} host_text)
string(REPLACE "#pragma once\n\n" "" runtime_text "${runtime_text}")
string(REPLACE "#include \"platform/component_runtime.h\"\n" "${runtime_text}" host_text "${host_text}")
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/include/opane/OPaneCommDLL.h CONTENT "${host_text}" @ONLY)
target_include_directories(opane_component_runtime INTERFACE
    $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/OPaneComm)
install(TARGETS opane_component_runtime EXPORT OPaneCommTargets)
install(TARGETS OPaneCommDLL LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${PROJECT_BINARY_DIR}/include/opane/OPaneCommDLL.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/opane)
install(FILES automation/OPaneCommDLL.idl DESTINATION ${CMAKE_INSTALL_DATADIR}/opane)
install(EXPORT OPaneCommTargets NAMESPACE OPaneComm:: DESTINATION ${package_folder})
configure_package_config_file(cmake/OPaneCommConfig.cmake.in ${PROJECT_BINARY_DIR}/OPaneCommConfig.cmake
    INSTALL_DESTINATION ${package_folder} PATH_VARS CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/OPaneCommConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/OPaneCommConfig.cmake ${PROJECT_BINARY_DIR}/OPaneCommConfigVersion.cmake
    DESTINATION ${package_folder})
file(RELATIVE_PATH prefix_from_pkgconfig /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/opane-component.pc.in ${PROJECT_BINARY_DIR}/opane-component.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/opane-component.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
