# The Debian packages, one for each component of the installation; scripts/package makes them from the preset package.
# Archives alone are not packaged.
if(NOT KX_INSTALL OR NOT BUILD_SHARED_LIBS)
    return()
endif()

# Until CHANGELOG.md gives the version its heading, packages are pre-releases: "1.0.0~dev", and the time of the last
# commit in UTC. A release replaces them. Without git the time is 0.
file(STRINGS "${PROJECT_SOURCE_DIR}/CHANGELOG.md" unreleased REGEX "^## Unreleased: ${PROJECT_VERSION}$")
foreach(variable_and_format "commit_time=%Y%m%d.%H%M" "KX_COMMIT_DATE=%a, %d %b %Y %H:%M:%S +0000")
    string(REGEX MATCH "^([^=]+)=(.+)$" matched "${variable_and_format}")
    execute_process(
        COMMAND ${CMAKE_COMMAND} -E env TZ=UTC LC_ALL=C git log -1 --format=%cd "--date=format-local:${CMAKE_MATCH_2}"
        WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}" OUTPUT_VARIABLE ${CMAKE_MATCH_1} OUTPUT_STRIP_TRAILING_WHITESPACE
        RESULT_VARIABLE failed ERROR_QUIET)
endforeach()
if(failed)
    set(commit_time 0)
    set(KX_COMMIT_DATE "Thu, 01 Jan 1970 00:00:00 +0000")
endif()
set(version "${PROJECT_VERSION}")
if(unreleased)
    string(APPEND version "~dev${commit_time}")
endif()
string(APPEND version "-1")

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development headers headers_development)
set(CPACK_PACKAGE_CONTACT "KxSipObject developers <kxsipobject@example.com>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/KxPackageFiles.cmake")
string(CONCAT CPACK_KX_CHANGELOG "kxsipobject (${version}) unstable; urgency=medium\n\n"
    "  * The changes are in CHANGELOG.md of the sources.\n\n -- ${CPACK_PACKAGE_CONTACT}  ${KX_COMMIT_DATE}\n")
set(CPACK_DEBIAN_PACKAGE_VERSION "${version}")
set(CPACK_DEBIAN_PACKAGE_SOURCE kxsipobject)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON) # which strips the files, too
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

# kx_package(<component> <package> <section> <depends> <synopsis> <description>)
macro(kx_package component package section depends synopsis description)
    string(TOUPPER "${component}" upper)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME "${package}")
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION "${section}")
    set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}")
    set(CPACK_DEBIAN_${upper}_DESCRIPTION "${synopsis}\n${description}")
endmacro()

# The names of the library packages end in the number of the SONAME, as is Debian's rule. A binary incompatible library
# gets another number and another package, which may be installed beside the old one.
set(library "libkxsipobject${PROJECT_VERSION_MAJOR}")
set(headers "libkxsipheaders${PROJECT_VERSION_MAJOR}")
kx_package(runtime ${library} libs "" "object model of SIP messages"
    "Shared libraries that read SIP messages from bytes, edit and derive them,\nand write them again.")
kx_package(development libkxsipobject-dev libdevel "${library} (= ${version}), liblog4cplus-dev, pkg-config"
    "object model of SIP messages - development files"
    "Headers, and the files by which CMake and pkg-config find the libraries.")
kx_package(headers ${headers} libs "${library} (= ${version})" "typed SIP headers of gateways"
    "Shared library of typed SIP headers that gateways carry: identity, routing,\nevents, charging.")
kx_package(headers_development libkxsipheaders-dev libdevel
    "${headers} (= ${version}), libkxsipobject-dev (= ${version})" "typed SIP headers of gateways - development files"
    "Headers, and the files by which CMake and pkg-config find the library.")
if(TARGET kxsip)
    list(APPEND CPACK_COMPONENTS_ALL tool)
    kx_package(tool kxsip net "${library} (= ${version}), ${headers} (= ${version})"
        "command-line tool that shows, checks and draws SIP"
        "It reads SIP messages from text files and packet captures, prints them in\nseveral forms, says what is wrong with them, and draws the calls.")
endif()

# A trigger refreshes the loader's cache. The scripts that CPack adds do it too, but are deprecated.
foreach(component RUNTIME HEADERS)
    set(CPACK_DEBIAN_${component}_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/cmake/debian/triggers")
endforeach()
include(CPack)
