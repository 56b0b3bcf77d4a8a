# The files installed beside the library and the programs, and the Debian packages: `cpack` in the build directory makes them,
# one of each component. What only a package needs is a component of its own, which is installed with no other.
set(share ${CMAKE_INSTALL_DATADIR}/zephan-rsm-logger)
set(documents ${CMAKE_INSTALL_DATADIR}/doc/zephan-rsm-logger)
install(DIRECTORY examples/ DESTINATION ${share} COMPONENT simulator FILES_MATCHING PATTERN *.scenario
    REGEX "/(console|own-agent)$" EXCLUDE)
install(FILES examples/zephan-config.xml DESTINATION ${share} COMPONENT tools)
install(DIRECTORY examples/ DESTINATION ${documents}/examples COMPONENT dev
    REGEX "/examples/CMakeLists.txt$" EXCLUDE PATTERN .clang-format EXCLUDE REGEX "/fleet$" EXCLUDE)
# For those who have devices, and do not build for them.
install(DIRECTORY examples/fleet DESTINATION ${documents}/examples COMPONENT tools PATTERN *.scenario EXCLUDE)
install(DIRECTORY docs/ DESTINATION ${documents}/docs COMPONENT dev)
install(FILES README.md CHANGELOG.md SECURITY.md DESTINATION ${documents} COMPONENT dev OPTIONAL)
configure_file(cmake/package/links.cmake.in package/links.cmake @ONLY)
install(SCRIPT ${PROJECT_BINARY_DIR}/package/links.cmake COMPONENT dev)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zephan-rsm-logger)
set(CPACK_PACKAGE_CONTACT "ZephanRSMLogger maintainers <maintainers@zephan-rsm-logger.example>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE none)  # by cmake/package/finish
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
    WORLD_READ WORLD_EXECUTE)  # whatever the umask is
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_STRIP_FILES ON)
if(CMAKE_CROSSCOMPILING AND CMAKE_LIBRARY_ARCHITECTURE)
    # The packages are those of the other processor, and so are those that they depend on: what is installed here says nothing of
    # them, scripts/sysroot keeps what they say of themselves.
    execute_process(COMMAND dpkg-architecture --host-type ${CMAKE_LIBRARY_ARCHITECTURE} --query DEB_HOST_ARCH
        OUTPUT_VARIABLE CPACK_DEBIAN_PACKAGE_ARCHITECTURE OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_SYSROOT}/lib/${CMAKE_LIBRARY_ARCHITECTURE}
        ${CMAKE_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE})
endif()
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/package/begin.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/package/finish.cmake)

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
    if(EXISTS ${PROJECT_SOURCE_DIR}/cmake/package/${component}.lintian)
        install(FILES cmake/package/${component}.lintian DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME ${name}
            COMPONENT package-${component} EXCLUDE_FROM_ALL)
    endif()
endmacro()
# taken_over(COMPONENT PACKAGE VERSION): the component's package has files that another one had before this version.
macro(taken_over component package version)
    string(TOUPPER ${component} key)
    set(CPACK_DEBIAN_${key}_PACKAGE_BREAKS "${package} (<< ${version})")
    set(CPACK_DEBIAN_${key}_PACKAGE_REPLACES "${package} (<< ${version})")
endmacro()
# library_control(COMPONENT LIBRARY VERSION): the component's package has this library, which others need from this version on.
macro(library_control component library version)
    string(TOUPPER ${component} key)
    set(directory ${PROJECT_BINARY_DIR}/package/${component})
    file(WRITE ${directory}/triggers "activate-noawait ldconfig\n")
    file(WRITE ${directory}/shlibs
        "${library} ${PROJECT_VERSION_MAJOR} ${CPACK_DEBIAN_${key}_PACKAGE_NAME} (>= ${version})\n")
    set(CPACK_DEBIAN_${key}_PACKAGE_CONTROL_EXTRA ${directory}/triggers ${directory}/shlibs)
endmacro()
set(about "An extension of a device's service agent: on an operator's request, on a
schedule or after a restart the agent polls its enterprise at a forced rate
for a bounded time; and the agent's log is written to files.")

set(module_package libzephan-rsm-logger${PROJECT_VERSION_MAJOR})
debian_package(module ${module_package} libs "remote session mode and file logger of a service agent" "")
# All exports are those of 1.1.0, which gave them their version.
file(STRINGS src/entry/exports.map exports REGEX "^ +ZP")
list(TRANSFORM exports REPLACE " +(.*);" " \\1@ZEPHAN_RSM_LOGGER_1 1.1.0\n")
list(JOIN exports "" exports)
library_control(module libZephanRSMLogger 1.1.0)
file(WRITE ${PROJECT_BINARY_DIR}/package/module/symbols "libZephanRSMLogger.so.${PROJECT_VERSION_MAJOR} ${module_package} #MINVER#
* Build-Depends-Package: libzephan-rsm-logger-dev
 ZEPHAN_RSM_LOGGER_1@ZEPHAN_RSM_LOGGER_1 1.1.0
${exports}")
list(APPEND CPACK_DEBIAN_MODULE_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/package/module/symbols)

if(CMAKE_BUILD_TYPE MATCHES Deb)
    # Of the library alone: it runs in other people's processes, and what the programs have is ten times as much.
    debian_package(debug ${module_package}-dbgsym debug "debug symbols of ${module_package}" "")
    set(CPACK_DEBIAN_DEBUG_PACKAGE_DEPENDS "${module_package} (= ${PROJECT_VERSION})")
    set(CPACK_DEBIAN_DEBUG_PACKAGE_SHLIBDEPS OFF)
    install(CODE "execute_process(COMMAND \"${PROJECT_SOURCE_DIR}/cmake/package/debug-symbols\"
        \"${CMAKE_OBJCOPY}\" \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/lib/debug/.build-id \"$<TARGET_FILE:ZephanRSMLogger>\" COMMAND_ERROR_IS_FATAL ANY)"
        COMPONENT package-debug EXCLUDE_FROM_ALL)
endif()

debian_package(dev libzephan-rsm-logger-dev libdevel "headers and documents of ZephanRSMLogger" "
.
This package has what a program needs to be built with it: headers, the files
for CMake and pkg-config, examples and documents.")
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${module_package} (= ${PROJECT_VERSION})")

if(ZEPHAN_AGENT_LIBRARIES)
    if(NOT ZEPHAN_AGENT_PACKAGES STREQUAL "none")
        set(CPACK_DEBIAN_MODULE_PACKAGE_DEPENDS "${ZEPHAN_AGENT_PACKAGES}")
    endif()
else()
    # Whoever installs the library on a device does not get a simulated enterprise unasked.
    set(CPACK_DEBIAN_MODULE_PACKAGE_DEPENDS krx-agent-libraries)
    set(agent_package libkrx-agent${PROJECT_VERSION_MAJOR})
    debian_package(agent ${agent_package} libs "stand-in for a service agent's libraries, for ZephanRSMLogger" "
.
This package has an agent and an enterprise that are simulated in the host's
own process. It is not for devices.")
    set(CPACK_DEBIAN_AGENT_PACKAGE_PROVIDES krx-agent-libraries)
    library_control(agent libkrx-agent ${PROJECT_VERSION})
    taken_over(agent ${module_package} 1.2.0)
    string(APPEND CPACK_DEBIAN_DEV_PACKAGE_DEPENDS ", ${agent_package} (= ${PROJECT_VERSION})")
endif()
if(ZEPHAN_PROGRAMS)
    debian_package(tools zephan-rsm-logger-tools utils "tools for ZephanRSMLogger" "
.
This package has the checker of the configuration, the reader of the log, and
programs that tell what an agent left behind and what it did.")
    taken_over(tools krx-agent-sim 1.2.0)
    find_package(nlohmann_json REQUIRED)
    install(FILES ${PROJECT_BINARY_DIR}/package/compiled-in.spdx
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/zephan-rsm-logger-tools COMPONENT package-tools EXCLUDE_FROM_ALL)
endif()
if(ZEPHAN_PROGRAMS AND NOT ZEPHAN_AGENT_LIBRARIES)
    debian_package(simulator krx-agent-sim devel "simulator of a service agent, for ZephanRSMLogger" "
.
This package has an agent that plays scenarios on a virtual clock, and example
scenarios.")
    set(CPACK_DEBIAN_SIMULATOR_PACKAGE_DEPENDS
        "${CPACK_DEBIAN_DEV_PACKAGE_DEPENDS}, zephan-rsm-logger-tools (= ${PROJECT_VERSION})")
    set(CPACK_DEBIAN_DEV_PACKAGE_SUGGESTS krx-agent-sim)
    install(FILES ${PROJECT_BINARY_DIR}/package/compiled-in.spdx
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/krx-agent-sim COMPONENT package-simulator EXCLUDE_FROM_ALL)
endif()

configure_file(cmake/package/begin.cmake.in package/begin.cmake @ONLY)
include(CPack)
