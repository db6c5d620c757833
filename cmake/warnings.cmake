add_library(opane_warnings INTERFACE)
target_compile_options(opane_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)

# A static library for each folder: opane_<name> with the alias opane::<name>, its sources by name, includes by path
# from the root. The libraries it uses follow with target_link_libraries.
function(opane_library name)
    add_library(opane_${name} STATIC ${ARGN})
    add_library(opane::${name} ALIAS opane_${name})
    target_include_directories(opane_${name} PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(opane_${name} PRIVATE opane_warnings)
endfunction()
