# Target doxygen: makes the reference of the public headers in <build>/doxygen/html. Where Doxygen is installed, a test
# makes it too; a warning fails the test.

find_package(Doxygen QUIET)
if(DOXYGEN_FOUND)
    configure_file("${PROJECT_SOURCE_DIR}/docs/Doxyfile.in" "${CMAKE_BINARY_DIR}/Doxyfile" @ONLY)
    set(command "${DOXYGEN_EXECUTABLE}" "${CMAKE_BINARY_DIR}/Doxyfile")
    add_custom_target(doxygen COMMAND ${command} COMMENT "Reference in ${CMAKE_BINARY_DIR}/doxygen/html" VERBATIM)
    if(KX_BUILD_TESTS AND NOT KX_SANITIZE AND NOT KX_FUZZ AND NOT KX_COVERAGE)
        add_test(NAME docs.reference COMMAND ${command})
        set_tests_properties(docs.reference PROPERTIES TIMEOUT 120)
    endif()
endif()
