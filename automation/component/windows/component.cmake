# The Windows side of the component: its type library, its resources, its entry point and its exports.
enable_language(RC)

set(windows ${CMAKE_CURRENT_SOURCE_DIR}/windows)
set(generated ${CMAKE_CURRENT_BINARY_DIR}/type-library)
file(MAKE_DIRECTORY ${generated})
add_custom_command(OUTPUT ${generated}/stdole2.tlb
    COMMAND ${OPANE_WIDL} -t -o ${generated}/stdole2.tlb ${windows}/stdole2.idl
    DEPENDS ${windows}/stdole2.idl
    VERBATIM)
add_custom_command(OUTPUT ${generated}/OPaneCommDLL.tlb
    COMMAND ${OPANE_WIDL} -I ${windows} -L ${generated} -t -o ${generated}/OPaneCommDLL.tlb
        ${PROJECT_SOURCE_DIR}/automation/OPaneCommDLL.idl
    DEPENDS ${PROJECT_SOURCE_DIR}/automation/OPaneCommDLL.idl ${windows}/oaidl.idl ${generated}/stdole2.tlb
    VERBATIM)

target_sources(OPaneCommDLL PRIVATE windows/library_entry.cpp windows/OPaneCommDLL.rc windows/exports.def)
set_source_files_properties(windows/OPaneCommDLL.rc PROPERTIES OBJECT_DEPENDS ${generated}/OPaneCommDLL.tlb)
target_compile_definitions(OPaneCommDLL PRIVATE
    OPANE_VERSION_NUMBERS=${PROJECT_VERSION_MAJOR},${PROJECT_VERSION_MINOR},${PROJECT_VERSION_PATCH},0)
target_include_directories(OPaneCommDLL PRIVATE ${generated})
# The entry points are exported by their plain names in 32 bits too, where the compiler decorates them.
target_link_options(OPaneCommDLL PRIVATE LINKER:--enable-stdcall-fixup $<$<CONFIG:Release>:-s>)
set_target_properties(OPaneCommDLL PROPERTIES PREFIX "")
