# zephan_install_program(NAME SUMMARY [COMPONENT]): installs a program with its manual page, which is made of its --help and of
# the files that all of them know, and with its completion for bash, which lies beside its CMakeLists.txt; with the tools, unless it
# belongs to another component.
find_program(HELP2MAN help2man)

function(zephan_install_program name summary)
    set(component ${ARGN} tools)
    list(GET component 0 component)
    install(TARGETS ${name} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${component})
    install(FILES ${name}.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME ${name}
        COMPONENT ${component})
    if(NOT HELP2MAN OR WIN32 OR ZEPHAN_SANITIZE OR (CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR))
        return()
    endif()
    list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
    string(STRIP "${emulator} $<TARGET_FILE:${name}>" program)
    set(page ${CMAKE_CURRENT_BINARY_DIR}/${name}.1)
    add_custom_command(OUTPUT ${page}.gz
        COMMAND sh -c "SOURCE_DATE_EPOCH=$(\"$0\") exec \"$@\"" ${PROJECT_SOURCE_DIR}/cmake/package/source-date ${HELP2MAN}
            --no-info --name=${summary} --version-string=${PROJECT_VERSION} --output=${page}
            --include=${PROJECT_SOURCE_DIR}/cmake/package/files.h2m ${program}
        COMMAND gzip -9nf ${page}
        DEPENDS ${name} ${PROJECT_SOURCE_DIR}/cmake/package/files.h2m COMMENT "Manual page of ${name}" VERBATIM)
    add_custom_target(${name}-manual ALL DEPENDS ${page}.gz)
    install(FILES ${page}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${component})
endfunction()
