# zephan_install_program(NAME SUMMARY): installs a program with its manual page, which is made of its --help and of the files
# that all of them know, and with its completion for bash, which lies beside its CMakeLists.txt.
find_program(HELP2MAN help2man)

function(zephan_install_program name summary)
    install(TARGETS ${name} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT simulator)
    install(FILES ${name}.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME ${name}
        COMPONENT simulator)
    if(NOT HELP2MAN OR CMAKE_CROSSCOMPILING OR ZEPHAN_SANITIZE)
        return()
    endif()
    set(page ${CMAKE_CURRENT_BINARY_DIR}/${name}.1)
    add_custom_command(OUTPUT ${page}.gz
        COMMAND ${HELP2MAN} --no-info --name=${summary} --version-string=${PROJECT_VERSION} --output=${page}
            --include=${PROJECT_SOURCE_DIR}/cmake/package/files.h2m $<TARGET_FILE:${name}>
        COMMAND gzip -9nf ${page}
        DEPENDS ${name} ${PROJECT_SOURCE_DIR}/cmake/package/files.h2m COMMENT "Manual page of ${name}" VERBATIM)
    add_custom_target(${name}-manual ALL DEPENDS ${page}.gz)
    install(FILES ${page}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT simulator)
endfunction()
