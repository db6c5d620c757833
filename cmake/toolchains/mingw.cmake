# What the two toolchain files share; they set OPANE_MINGW to the compiler's prefix. The compilers with POSIX threads:
# the others have no std::thread and no std::mutex.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${OPANE_MINGW}-gcc-posix)
set(CMAKE_CXX_COMPILER ${OPANE_MINGW}-g++-posix)
set(CMAKE_RC_COMPILER ${OPANE_MINGW}-windres)
set(OPANE_WIDL ${OPANE_MINGW}-widl)
set(CMAKE_FIND_ROOT_PATH /usr/${OPANE_MINGW})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Programs and libraries need nothing but the system's own libraries.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_MODULE_LINKER_FLAGS_INIT -static)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -static)
