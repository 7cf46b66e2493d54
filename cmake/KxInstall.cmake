# Installation: libraries, headers in their folders, the CMake package and the pkg-config file.

if(TARGET kxsipobject_objects AND TARGET kxutil_objects AND TARGET kxcore_objects)
    include(CMakePackageConfigHelpers)

    install(TARGETS kxcore kxutil kxsipobject EXPORT KxSipObjectTargets
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT library)
    install(EXPORT KxSipObjectTargets NAMESPACE Kx::
        DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/KxSipObject" COMPONENT library)
    foreach(folder core util sipobject)
        install(DIRECTORY "${PROJECT_SOURCE_DIR}/${folder}"
            DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/kxsipobject" COMPONENT library
            FILES_MATCHING PATTERN "*.h")
    endforeach()

    configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/KxSipObjectConfig.cmake.in"
        "${CMAKE_BINARY_DIR}/package/KxSipObjectConfig.cmake"
        INSTALL_DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/KxSipObject")
    write_basic_package_version_file("${CMAKE_BINARY_DIR}/package/KxSipObjectConfigVersion.cmake"
        COMPATIBILITY SameMinorVersion)
    install(FILES "${CMAKE_BINARY_DIR}/package/KxSipObjectConfig.cmake"
        "${CMAKE_BINARY_DIR}/package/KxSipObjectConfigVersion.cmake"
        DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/KxSipObject" COMPONENT library)

    file(RELATIVE_PATH KX_PREFIX_FROM_PC "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
    configure_file("${PROJECT_SOURCE_DIR}/cmake/kxsipobject.pc.in"
        "${CMAKE_BINARY_DIR}/package/kxsipobject.pc" @ONLY)
    install(FILES "${CMAKE_BINARY_DIR}/package/kxsipobject.pc"
        DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT library)

    if(TARGET kxsip)
        install(TARGETS kxsip RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tool)
    endif()
endif()
