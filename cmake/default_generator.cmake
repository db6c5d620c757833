# The default character generator, made from a font of the system by our own tool.
set(OPANE_DEFAULT_FONT /usr/share/fonts/X11/misc/5x8.pcf.gz CACHE FILEPATH
    "Font of the default character generator, a bitmap font of at most 6 x 8 pixels or an outline font")
if(NOT EXISTS "${OPANE_DEFAULT_FONT}")
    message(FATAL_ERROR "The font of the default character generator, ${OPANE_DEFAULT_FONT}, is missing. "
        "Install it (Debian: xfonts-base) or name another with -DOPANE_DEFAULT_FONT=FILE.")
endif()

set(OPANE_DEFAULT_GENERATOR ${PROJECT_BINARY_DIR}/share/opane/latin1.gen)
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/share/opane)
add_custom_command(OUTPUT ${OPANE_DEFAULT_GENERATOR}
    COMMAND opane-generator make --font ${OPANE_DEFAULT_FONT} --output ${OPANE_DEFAULT_GENERATOR}
    DEPENDS opane-generator ${OPANE_DEFAULT_FONT}
    COMMENT "Making the default character generator"
    VERBATIM)
add_custom_target(opane_default_generator ALL DEPENDS ${OPANE_DEFAULT_GENERATOR})
install(FILES ${OPANE_DEFAULT_GENERATOR} DESTINATION ${CMAKE_INSTALL_DATADIR}/opane)
