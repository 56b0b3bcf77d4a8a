# zephan-expat: Expat, with the functions that tell where the parser is under the names of Expat 2.9, which deprecates the older ones.
find_package(EXPAT 2.4 REQUIRED)
add_library(zephan-expat INTERFACE)
target_link_libraries(zephan-expat INTERFACE EXPAT::EXPAT)
if(EXPAT_VERSION_STRING VERSION_LESS 2.9)
    foreach(what LineNumber ColumnNumber ByteIndex ByteCount)
        target_compile_definitions(zephan-expat INTERFACE XML_GetCurrent${what}64=XML_GetCurrent${what})
    endforeach()
endif()
