set(OPANE_MINGW i686-w64-mingw32)
set(CMAKE_SYSTEM_PROCESSOR i686)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
# Old hosts call with a stack aligned to 4 bytes; the compiler counts on 16.
set(CMAKE_CXX_FLAGS_INIT -mstackrealign)
