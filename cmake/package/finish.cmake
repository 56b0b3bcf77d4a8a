# What cpack leaves to be done on each package.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
    execute_process(COMMAND "${CMAKE_CURRENT_LIST_DIR}/finish" "${package}" COMMAND_ERROR_IS_FATAL ANY)
endforeach()
