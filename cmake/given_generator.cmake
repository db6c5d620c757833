# The default character generator of a build that cannot run our own tool for it: a file made by a native build.
set(OPANE_DEFAULT_GENERATOR_FILE ${PROJECT_SOURCE_DIR}/build/release/share/opane/latin1.gen CACHE FILEPATH
    "Default character generator, made by a native build; none comes with the programs when it is missing")
if(EXISTS "${OPANE_DEFAULT_GENERATOR_FILE}")
    configure_file(${OPANE_DEFAULT_GENERATOR_FILE} ${PROJECT_BINARY_DIR}/share/opane/latin1.gen COPYONLY)
    install(FILES ${PROJECT_BINARY_DIR}/share/opane/latin1.gen DESTINATION ${CMAKE_INSTALL_DATADIR}/opane)
endif()
