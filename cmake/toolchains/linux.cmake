# Programs for Debian on another processor, made on Debian. To be included by the file of a processor, which sets
# CMAKE_SYSTEM_PROCESSOR, ZEPHAN_ARCHITECTURE (Debian's name of it) and ZEPHAN_TRIPLET, and then says what runs its programs here.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${ZEPHAN_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${ZEPHAN_TRIPLET}-g++)

# That processor's libraries, as scripts/sysroot lays them out.
cmake_path(SET CMAKE_SYSROOT NORMALIZE ${CMAKE_CURRENT_LIST_DIR}/../../build/sysroots/${ZEPHAN_ARCHITECTURE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
file(GLOB ZEPHAN_PKG_CONFIG ${CMAKE_SYSROOT}/usr/lib/*/pkgconfig)
set(ENV{PKG_CONFIG_LIBDIR} ${ZEPHAN_PKG_CONFIG}:${CMAKE_SYSROOT}/usr/share/pkgconfig)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
