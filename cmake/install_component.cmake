# What is installed of the library: the component, its runtime, their headers, the type library's source and a package for
# CMake and for pkg-config. The classes behind the component stay private.
include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/OPaneComm)
install(TARGETS opane_component_runtime EXPORT OPaneCommTargets)
install(DIRECTORY include/opane DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS OPaneCommDLL LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
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
