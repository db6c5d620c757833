# What makes an attack on a fault of ours harder, in optimised builds without sanitizers or coverage; the costs are in
# docs/speed.md. _FORTIFY_SOURCE is at its level 3, which also checks buffers whose size is known only at run time; older
# compilers and C libraries take it as 2. A value of the caller's or of the compiler's own gives way to it.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

set(OPANE_HARDENED 0)
if(NOT OPANE_SANITIZE AND NOT OPANE_BUILD_FUZZ AND NOT OPANE_COVERAGE)
    set(OPANE_HARDENED $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
endif()
add_compile_options("$<${OPANE_HARDENED}:-fstack-protector-strong;-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>")
if(WIN32)
    # The protector's functions come as a static library, which the compiler adds.
    add_link_options("$<${OPANE_HARDENED}:-fstack-protector-strong;LINKER:--dynamicbase,--nxcompat>")
    if(CMAKE_SIZEOF_VOID_P EQUAL 8)
        add_link_options("$<${OPANE_HARDENED}:LINKER:--high-entropy-va>")
    endif()
else()
    add_link_options("$<${OPANE_HARDENED}:LINKER:-z,relro,-z,now>")
    # Only the processors that can check where calls and jumps lead have a flag for it.
    check_cxx_compiler_flag(-fcf-protection=full OPANE_HAS_CF_PROTECTION)
    if(OPANE_HAS_CF_PROTECTION)
        add_compile_options("$<${OPANE_HARDENED}:-fcf-protection=full>")
    endif()
endif()
