set(CMAKE_SYSTEM_PROCESSOR i686)
set(ZEPHAN_ARCHITECTURE i386)
set(ZEPHAN_TRIPLET i686-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/linux.cmake)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_SYSROOT}/lib/ld-linux.so.2
    --library-path ${CMAKE_SYSROOT}/lib/i386-linux-gnu:${CMAKE_SYSROOT}/usr/lib/i386-linux-gnu)
