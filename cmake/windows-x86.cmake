set(mingw i686-w64-mingw32)
set(CMAKE_SYSTEM_PROCESSOR i686)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
# Floats are rounded to their own size at every step, as on 64 bits. Callers from outside align the stack less than such
# instructions want it.
set(CMAKE_C_FLAGS_INIT "-msse2 -mfpmath=sse -mstackrealign")
set(CMAKE_CXX_FLAGS_INIT ${CMAKE_C_FLAGS_INIT})
