set(CMAKE_SYSTEM_PROCESSOR i686)
set(ZEPHAN_TRIPLET i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/windows.cmake)
if(EXISTS ${CMAKE_CURRENT_LIST_DIR}/../../build/wine32)  # which scripts/test windows unpacks
    set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine32)
endif()
