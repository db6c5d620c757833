target_link_options(OPaneCommDLL PRIVATE LINKER:--version-script=${CMAKE_CURRENT_SOURCE_DIR}/posix/exports.map)
set_target_properties(OPaneCommDLL PROPERTIES
    INSTALL_RPATH $ORIGIN
    LINK_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/posix/exports.map
)
