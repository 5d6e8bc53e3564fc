# What `make install` lays down and `make package` packs, in components that are Debian's packages: library, ui, dev,
# ui-dev and tool.
include(CMakePackageConfigHelpers)
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Torvel")
set(pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

# torvel_install(<target> <Component> <runtime> <dev>): both kinds of one library, with what find_package and
# pkg-config read.
function(torvel_install target component runtime dev)
    foreach(kind Static Shared)
        set(library ${target})
        if(kind STREQUAL Shared)
            set(library ${target}_shared)
        endif()
        install(TARGETS ${library} EXPORT Torvel${component}${kind}
            LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT ${runtime} NAMELINK_COMPONENT ${dev}
            ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT ${dev})
        install(EXPORT Torvel${component}${kind} NAMESPACE Torvel:: DESTINATION "${package_dir}" COMPONENT ${dev})
    endforeach()
endfunction()

# torvel_pkgconfig(<name> <dev>): <name>.pc from its template, which finds its prefix from where it lies.
function(torvel_pkgconfig name dev)
    file(RELATIVE_PATH TORVEL_PREFIX_FROM_PC "/${pkgconfig_dir}" "/")
    string(REGEX REPLACE "/$" "" TORVEL_PREFIX_FROM_PC "${TORVEL_PREFIX_FROM_PC}")
    configure_file("${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in" "${PROJECT_BINARY_DIR}/${name}.pc" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/${name}.pc" DESTINATION "${pkgconfig_dir}" COMPONENT ${dev})
endfunction()

torvel_install(torvel Core library dev)
torvel_pkgconfig(torvel dev)
if(TORVEL_UI)
    torvel_install(torvel_ui UI ui ui-dev)
    torvel_pkgconfig(torvel-ui ui-dev)
    install(FILES cmake/TorvelUIDependencies.cmake DESTINATION "${package_dir}" COMPONENT ui-dev)
endif()
if(TARGET torvel_testing)
    install(TARGETS torvel_testing EXPORT TorvelTesting ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT dev)
    install(EXPORT TorvelTesting NAMESPACE Torvel:: DESTINATION "${package_dir}" COMPONENT dev)
    install(TARGETS torvel_sandbox EXPORT TorvelSandbox ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT dev)
    install(EXPORT TorvelSandbox NAMESPACE Torvel:: DESTINATION "${package_dir}" COMPONENT dev)
    install(FILES apps/sandbox/Sandbox.h apps/sandbox/Envelope.h
        DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/torvel/sandbox" COMPONENT dev)
    install(DIRECTORY testing/TorvelTesting DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/torvel" COMPONENT dev
        FILES_MATCHING PATTERN "*.h")
endif()

# The headers that hosts may include; which they are is asked when they are installed.
install(CODE "
    execute_process(COMMAND \"${PROJECT_SOURCE_DIR}/tools/public_headers\"
        OUTPUT_VARIABLE headers OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    string(REPLACE \"\\n\" \";\" headers \"\${headers}\")
    foreach(header IN LISTS headers)
        cmake_path(GET header PARENT_PATH folder)
        file(INSTALL \"${PROJECT_SOURCE_DIR}/src/\${header}\"
            DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_INCLUDEDIR}/torvel/\${folder}\")
    endforeach()" COMPONENT dev)

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/TorvelConfig.cmake.in" "${PROJECT_BINARY_DIR}/TorvelConfig.cmake"
    INSTALL_DESTINATION "${package_dir}" NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/TorvelConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/TorvelConfig.cmake" "${PROJECT_BINARY_DIR}/TorvelConfigVersion.cmake"
    cmake/TorvelCoreDependencies.cmake DESTINATION "${package_dir}" COMPONENT dev)

install(DIRECTORY resources/ DESTINATION "${CMAKE_INSTALL_DATADIR}/torvel" COMPONENT library)

# The Debian packages.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "Torvel developers <torvel@localhost>")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

# torvel_package(<component> <package> <section> <summary> [<dependency>]...)
macro(torvel_package component package section summary)
    string(TOUPPER "${component}" key)
    set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${package})
    set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${key}_DESCRIPTION "${summary}")
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    string(REPLACE ";" ", " CPACK_DEBIAN_${key}_PACKAGE_DEPENDS "${ARGN}")
endmacro()

set(version "${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}")
set(same "(= ${PROJECT_VERSION})")
torvel_package(library libtorvel${version} libs "client library for mobile-money hosts"
    "libcurl4 (>= 7.88)" libssl3)  # loaded at run time
set(CPACK_DEBIAN_LIBRARY_PACKAGE_RECOMMENDS ca-certificates)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SUGGESTS libsecret-1-0)  # asked for a key at run time, where a host wants it
torvel_package(dev libtorvel-dev libdevel "client library for mobile-money hosts, to build with"
    "libtorvel${version} ${same}")
# What linking statically takes, and the test kit.
set(CPACK_DEBIAN_DEV_PACKAGE_RECOMMENDS "libssl-dev, zlib1g-dev, libbrotli-dev, libicu-dev, \
liburiparser-dev, libplist-dev, libsimdjson-dev, libsodium-dev, libsqlite3-dev, libfreetype-dev, libgtest-dev, libcpp-httplib-dev, pkg-config")
torvel_package(tool torvel utils "client library for mobile-money hosts, on the command line"
    "libtorvel${version} ${same}")  # for the resources
if(TORVEL_UI)
    torvel_package(ui libtorvel-ui${version} libs "client library for mobile-money hosts, screen side"
        "libtorvel${version} ${same}")
    torvel_package(ui-dev libtorvel-ui-dev libdevel "client library for mobile-money hosts, screen side to build with"
        "libtorvel-ui${version} ${same}" "libtorvel-dev ${same}")
    set(CPACK_DEBIAN_UI-DEV_PACKAGE_RECOMMENDS "qt6-base-dev, qt6-tools-dev, libfontconfig-dev, libpng-dev, libturbojpeg0-dev")
endif()
include(CPack)
