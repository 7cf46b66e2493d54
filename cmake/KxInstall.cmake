# Installation: libraries, headers in their folders, the CMake package, the pkg-config file and the tool; and the Debian
# packages made of these, one for each component. The installed files may be moved as a whole.

if(NOT TARGET kxsipobject_objects OR NOT TARGET kxutil_objects OR NOT TARGET kxcore_objects)
    return()
endif()
include(CMakePackageConfigHelpers)

set(KX_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/KxSipObject")
install(TARGETS kxcore kxutil kxsipobject EXPORT KxSipObjectTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development)
install(EXPORT KxSipObjectTargets NAMESPACE Kx:: DESTINATION "${KX_PACKAGE_DIR}" COMPONENT development)
# The typed headers beyond those of sipobject/ are a component of their own.
install(TARGETS kxsipheaders EXPORT KxSipHeadersTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT headers NAMELINK_COMPONENT headers_development)
install(EXPORT KxSipHeadersTargets NAMESPACE Kx:: DESTINATION "${KX_PACKAGE_DIR}" COMPONENT headers_development)
list(TRANSFORM KX_PRIVATE_HEADERS REPLACE "(.+)" "/\\1$" OUTPUT_VARIABLE private)
list(JOIN private "|" private)
foreach(folder core util sipobject sipheaders)
    string(REGEX REPLACE "^sipheaders$" "headers_development" component "${folder}")
    string(REGEX REPLACE "^(core|util|sipobject)$" "development" component "${component}")
    foreach(root "${PROJECT_SOURCE_DIR}" "${KX_GENERATED_DIR}")
        install(DIRECTORY "${root}/${folder}" OPTIONAL
            DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/kxsipobject" COMPONENT ${component}
            FILES_MATCHING PATTERN "*.h" REGEX "(${private})" EXCLUDE)
    endforeach()
endforeach()

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/KxSipObjectConfig.cmake.in"
    "${CMAKE_BINARY_DIR}/package/KxSipObjectConfig.cmake" INSTALL_DESTINATION "${KX_PACKAGE_DIR}")
write_basic_package_version_file("${CMAKE_BINARY_DIR}/package/KxSipObjectConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_BINARY_DIR}/package/KxSipObjectConfig.cmake"
    "${CMAKE_BINARY_DIR}/package/KxSipObjectConfigVersion.cmake"
    DESTINATION "${KX_PACKAGE_DIR}" COMPONENT development)

file(RELATIVE_PATH KX_PREFIX_FROM_PC "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
list(TRANSFORM KX_PUBLIC_DEFINITIONS PREPEND " -D" OUTPUT_VARIABLE KX_PC_DEFINITIONS)
string(REPLACE ";" "" KX_PC_DEFINITIONS "${KX_PC_DEFINITIONS}")
foreach(library kxsipobject kxsipheaders)
    configure_file("${PROJECT_SOURCE_DIR}/cmake/${library}.pc.in" "${CMAKE_BINARY_DIR}/package/${library}.pc" @ONLY)
endforeach()
install(FILES "${CMAKE_BINARY_DIR}/package/kxsipobject.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)
install(FILES "${CMAKE_BINARY_DIR}/package/kxsipheaders.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT headers_development)

if(TARGET kxsip)
    install(TARGETS kxsip RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tool)
endif()

# The names of the library packages end in the number of the SONAME, as is Debian's rule. A binary incompatible library
# gets another number and another package, which may be installed beside the old one.
set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development headers headers_development tool)
set(CPACK_PACKAGE_CONTACT "KxSipObject developers <kxsipobject@example.com>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")

set(library "libkxsipobject${PROJECT_VERSION_MAJOR}")
set(this "${library} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "${library}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "Shared libraries that read SIP messages from bytes, edit and derive them, and write them again.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkxsipobject-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${this}, liblog4cplus-dev, libace-dev, libssl-dev, pkg-config")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "Headers, and the files by which CMake and pkg-config find the libraries.")
set(headers "libkxsipheaders${PROJECT_VERSION_MAJOR}")
set(CPACK_DEBIAN_HEADERS_PACKAGE_NAME "${headers}")
set(CPACK_DEBIAN_HEADERS_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_HEADERS_PACKAGE_DEPENDS "${this}")
set(CPACK_COMPONENT_HEADERS_DESCRIPTION
    "Shared library of typed SIP headers that gateways carry: identity, routing, events, charging.")
set(headers "${headers} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_HEADERS_DEVELOPMENT_PACKAGE_NAME libkxsipheaders-dev)
set(CPACK_DEBIAN_HEADERS_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_HEADERS_DEVELOPMENT_PACKAGE_DEPENDS "${headers}, libkxsipobject-dev (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_HEADERS_DEVELOPMENT_DESCRIPTION
    "Headers, and the files by which CMake and pkg-config find the library.")
set(CPACK_DEBIAN_TOOL_PACKAGE_NAME kxsip)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION net)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${this}, ${headers}")
set(CPACK_COMPONENT_TOOL_DESCRIPTION "kxsip shows, checks and draws the SIP of text files and packet captures.")
include(CPack)
