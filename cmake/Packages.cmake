# The files installed beside the library and the programs, and the Debian packages: `cpack` in the build directory makes them,
# one of each component. What only a package needs is a component of its own, which is installed with no other.
set(share ${CMAKE_INSTALL_DATADIR}/zephan-rsm-logger)
set(documents ${CMAKE_INSTALL_DATADIR}/doc/zephan-rsm-logger)
install(DIRECTORY examples/ DESTINATION ${share} COMPONENT simulator
    FILES_MATCHING PATTERN *.scenario PATTERN zephan-config.xml)
install(DIRECTORY examples/ DESTINATION ${documents}/examples COMPONENT dev FILES_MATCHING PATTERN *.c PATTERN *.cpp)
install(DIRECTORY docs/ DESTINATION ${documents}/docs COMPONENT dev)
install(FILES README.md CHANGELOG.md SECURITY.md DESTINATION ${documents} COMPONENT dev OPTIONAL)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zephan-rsm-logger)
set(CPACK_PACKAGE_CONTACT "ZephanRSMLogger maintainers <maintainers@zephan-rsm-logger.example>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})

# debian_package(COMPONENT NAME SECTION SUMMARY TEXT): a component's package.
macro(debian_package component name section summary text)
    string(TOUPPER ${component} key)
    list(APPEND CPACK_COMPONENTS_ALL ${component} package-${component})
    set(CPACK_COMPONENT_${key}_GROUP ${component})
    set(CPACK_COMPONENT_PACKAGE-${key}_GROUP ${component})
    set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${key}_DESCRIPTION "${summary}\n${about}${text}")
    install(FILES cmake/package/copyright ${PROJECT_BINARY_DIR}/package/changelog.gz
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT package-${component} EXCLUDE_FROM_ALL)
endmacro()
set(about "An extension of a device's service agent: on an operator's request, on a
schedule or after a restart the agent polls its enterprise at a forced rate
for a bounded time; and the agent's log is written to files.")

set(module_package libzephan-rsm-logger${PROJECT_VERSION_MAJOR})
debian_package(module ${module_package} libs "remote session mode and file logger of a service agent" "")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
file(WRITE ${PROJECT_BINARY_DIR}/package/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_MODULE_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/package/triggers)
install(FILES cmake/package/module.lintian DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME ${module_package}
    COMPONENT package-module EXCLUDE_FROM_ALL)

debian_package(dev libzephan-rsm-logger-dev libdevel "headers and documents of ZephanRSMLogger" "
.
This package has what a program needs to be built with it: headers, the files
for CMake and pkg-config, examples and documents.")
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${module_package} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEV_PACKAGE_SUGGESTS krx-agent-sim)

if(ZEPHAN_PROGRAMS AND NOT ZEPHAN_AGENT_LIBRARIES)
    debian_package(simulator krx-agent-sim devel "simulator of a service agent, for ZephanRSMLogger" "
.
This package has an agent that plays scenarios on a virtual clock, the checker
of the configuration, the reader of the log, programs that tell what an
agent left behind and what it did, and example scenarios.")
    set(CPACK_DEBIAN_SIMULATOR_PACKAGE_DEPENDS "${module_package} (= ${PROJECT_VERSION})")
elseif(ZEPHAN_PROGRAMS)
    debian_package(simulator zephan-rsm-logger-tools utils "tools for ZephanRSMLogger" "
.
This package has the checker of the configuration, the reader of the log, and
programs that tell what an agent left behind and what it did.")
endif()

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(cmake/package/changelog.in package/changelog @ONLY)
execute_process(COMMAND gzip -9nf ${PROJECT_BINARY_DIR}/package/changelog COMMAND_ERROR_IS_FATAL ANY)
include(CPack)
