# Read by examples/own-agent after its project(), and done at its end: has the module left its parent's settings alone?
cmake_language(DEFER CALL cmake_language EVAL CODE [[
set(settings "${CMAKE_CXX_STANDARD};${CMAKE_RUNTIME_OUTPUT_DIRECTORY};${CMAKE_LIBRARY_OUTPUT_DIRECTORY};${BUILD_TESTING}")
if(NOT settings STREQUAL "17;;;")
    message(FATAL_ERROR "The module changes its parent's settings: ${settings}")
endif()
# Nothing of the stand-in agent, of the programs or of what is for developers only is part of it.
foreach(target krx-agent krx-agent-sim zephan-log minimal-agent-c test-support Nightly package)
    if(TARGET ${target})
        message(FATAL_ERROR "The module brings the target ${target}")
    endif()
endforeach()
# So that the test is over soon, one source stands for all; the other objects are those of the build.
list(FILTER BUILT_OBJECTS EXCLUDE REGEX entry/RSMExtension)
set_target_properties(zephan-objects PROPERTIES SOURCES ${ZEPHAN_SOURCE}/src/entry/RSMExtension.cpp)
set_property(TARGET ZephanRSMLogger PROPERTY SOURCES ${BUILT_OBJECTS})
]])
