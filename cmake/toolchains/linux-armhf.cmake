set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(ZEPHAN_ARCHITECTURE armhf)
set(ZEPHAN_TRIPLET arm-linux-gnueabihf)
include(${CMAKE_CURRENT_LIST_DIR}/linux.cmake)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L ${CMAKE_SYSROOT})
# Of arguments that GCC before 7 passed otherwise: nothing here is linked with what such a compiler made.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
