# Installation: libraries, headers in their folders, the CMake package, the pkg-config files and the tool. The installed
# files may be moved as a whole.
include(CMakePackageConfigHelpers)

set(KX_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/KxSipObject")
# kx_install_library(<target> <export> <runtime component> <development component>)
function(kx_install_library library export runtime development)
    install(TARGETS ${library} EXPORT ${export}
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT ${runtime} NAMELINK_COMPONENT ${development})
    if(TARGET ${library}_archive)
        install(TARGETS ${library}_archive EXPORT ${export}
            ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT ${development})
    endif()
endfunction()

foreach(library kxcore kxutil kxsipobject)
    kx_install_library(${library} KxSipObjectTargets runtime development)
endforeach()
# The typed headers beyond those of sipobject/ are components of their own.
kx_install_library(kxsipheaders KxSipHeadersTargets headers headers_development)
install(EXPORT KxSipObjectTargets NAMESPACE Kx:: DESTINATION "${KX_PACKAGE_DIR}" COMPONENT development)
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

# What a host that links the libraries needs, by the names of pkg-config. Archives need what shared libraries have loaded.
set(KX_REQUIRED log4cplus)
if(BUILD_SHARED_LIBS)
    set(KX_PC_LIBS "-lkxsipobject -lkxutil -lkxcore")
    set(KX_PC_HEADERS_LIBS "-lkxsipheaders")
else()
    list(APPEND KX_REQUIRED ACE libcrypto)
    set(KX_PC_LIBS "-Wl,--whole-archive,-lkxsipobject,-lkxutil,-lkxcore,--no-whole-archive")
    set(KX_PC_HEADERS_LIBS "-Wl,--whole-archive,-lkxsipheaders,--no-whole-archive")
endif()
list(JOIN KX_REQUIRED " " KX_PC_REQUIRED)

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/KxSipObjectConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/package/KxSipObjectConfig.cmake" INSTALL_DESTINATION "${KX_PACKAGE_DIR}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/package/KxSipObjectConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/package/KxSipObjectConfig.cmake"
    "${PROJECT_BINARY_DIR}/package/KxSipObjectConfigVersion.cmake"
    DESTINATION "${KX_PACKAGE_DIR}" COMPONENT development)

file(RELATIVE_PATH KX_PREFIX_FROM_PC "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
list(TRANSFORM KX_PUBLIC_DEFINITIONS PREPEND " -D" OUTPUT_VARIABLE KX_PC_DEFINITIONS)
string(REPLACE ";" "" KX_PC_DEFINITIONS "${KX_PC_DEFINITIONS}")
foreach(library kxsipobject kxsipheaders)
    configure_file("${PROJECT_SOURCE_DIR}/cmake/${library}.pc.in" "${PROJECT_BINARY_DIR}/package/${library}.pc" @ONLY)
endforeach()
install(FILES "${PROJECT_BINARY_DIR}/package/kxsipobject.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)
install(FILES "${PROJECT_BINARY_DIR}/package/kxsipheaders.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT headers_development)

if(TARGET kxsip)
    install(TARGETS kxsip RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tool)
endif()

