# Windows programs made on Debian by mingw-w64, with the threads of POSIX that the C++ library needs. To be included by the
# file of a processor, which sets ZEPHAN_TRIPLET.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${ZEPHAN_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${ZEPHAN_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${ZEPHAN_TRIPLET}-windres)

# The compiler's own libraries, and those that scripts/windows-libraries built.
set(ZEPHAN_WINDOWS_LIBRARIES ${CMAKE_CURRENT_LIST_DIR}/../../build/windows-libraries/${CMAKE_SYSTEM_PROCESSOR})
set(CMAKE_FIND_ROOT_PATH /usr/${ZEPHAN_TRIPLET} ${ZEPHAN_WINDOWS_LIBRARIES})
set(CMAKE_PREFIX_PATH ${ZEPHAN_WINDOWS_LIBRARIES})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
