# The manual pages of the header and of the configuration, which scripts/manual makes of their comments. Those of the programs
# are made of what they say for --help: cmake/Program.cmake.
find_package(Python3 COMPONENTS Interpreter)
if(NOT Python3_FOUND OR ZEPHAN_SANITIZE)
    return()
endif()
set(pages ${PROJECT_BINARY_DIR}/zephan-rsm-logger.3 ${PROJECT_BINARY_DIR}/zephan-config.5)
add_custom_command(OUTPUT ${PROJECT_BINARY_DIR}/zephan-rsm-logger.3.gz ${PROJECT_BINARY_DIR}/zephan-config.5.gz
    COMMAND ${Python3_EXECUTABLE} -B ${PROJECT_SOURCE_DIR}/scripts/manual ${PROJECT_BINARY_DIR}
    COMMAND gzip -9nf ${pages}
    DEPENDS scripts/manual include/ZephanRSMLogger.h tools/config-check/zephan-config.xsd examples/zephan-config.xml
    COMMENT "Manual pages of the header and the configuration" VERBATIM)
add_custom_target(zephan-manuals ALL DEPENDS ${PROJECT_BINARY_DIR}/zephan-rsm-logger.3.gz)
install(FILES ${PROJECT_BINARY_DIR}/zephan-rsm-logger.3.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 COMPONENT dev)
if(ZEPHAN_PROGRAMS)  # with the programs that people ask about it
    install(FILES ${PROJECT_BINARY_DIR}/zephan-config.5.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man5 COMPONENT tools)
endif()
