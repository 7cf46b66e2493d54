# Each folder is a target. The functions glob for the sources, so that a new class needs no change here.

# kx_add_library(<name> ALIAS <Kx::Name> DEPENDS <targets>... [PRIVATE <targets>...])
# Makes the library <name> of all sources under the current folder. They are first compiled into the OBJECT library
# <name>_objects. PRIVATE targets are not passed on to users.
function(kx_add_library name)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "ALIAS" "DEPENDS;PRIVATE")
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp")
    add_library(${name}_objects OBJECT ${sources})
    target_include_directories(${name}_objects PUBLIC "${PROJECT_SOURCE_DIR}" "${KX_GENERATED_DIR}")
    target_link_libraries(${name}_objects PUBLIC ${ARG_DEPENDS} PRIVATE ${ARG_PRIVATE})
    target_compile_definitions(${name}_objects PRIVATE ${KX_PUBLIC_DEFINITIONS})
    kx_link_library(${name} OBJECTS ${name}_objects DEPENDS ${ARG_DEPENDS} PRIVATE ${ARG_PRIVATE})
    string(REGEX REPLACE "^Kx::" "" export_name "${ARG_ALIAS}")
    set_target_properties(${name} PROPERTIES EXPORT_NAME ${export_name})
    if(TARGET ${name}_archive)
        set_target_properties(${name}_archive PROPERTIES EXPORT_NAME ${export_name}Archive OUTPUT_NAME ${name})
    endif()
    add_library(${ARG_ALIAS} ALIAS ${name})
endfunction()

# kx_link_library(<name> OBJECTS <target> [DEPENDS <targets>...] [PRIVATE <targets>...])
# Makes the shared library <name> of compiled objects. If BUILD_SHARED_LIBS is off, makes the archive <name>_archive, and
# <name> becomes the target that links all of it: nothing refers to the objects that only register their class.
function(kx_link_library name)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "OBJECTS" "DEPENDS;PRIVATE")
    if(BUILD_SHARED_LIBS)
        set(library ${name})
        add_library(${name} SHARED $<TARGET_OBJECTS:${ARG_OBJECTS}>)
        set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
            INSTALL_RPATH "$ORIGIN")
        # dlclose leaves the library where it is: threads that used it need it when they end, log4cplus keeps loggers
        # whose class is in it, and its classes are registered with the library that it links.
        target_link_options(${name} PRIVATE LINKER:-z,nodelete)
    else()
        set(library ${name}_archive)
        add_library(${library} STATIC $<TARGET_OBJECTS:${ARG_OBJECTS}>)
        add_library(${name} INTERFACE)
        target_link_libraries(${name} INTERFACE "$<LINK_LIBRARY:WHOLE_ARCHIVE,$<TARGET_NAME:${library}>>")
    endif()
    set_target_properties(${library} PROPERTIES LINKER_LANGUAGE CXX)
    target_link_libraries(${library} PUBLIC ${ARG_DEPENDS} PRIVATE ${ARG_PRIVATE})
    target_include_directories(${library} PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR};${KX_GENERATED_DIR}>"
        "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/kxsipobject>")
    target_compile_features(${library} PUBLIC cxx_std_20)
    target_compile_definitions(${library} PUBLIC ${KX_PUBLIC_DEFINITIONS})
endfunction()

# kx_add_tests(<name> <subfolder> LIBRARIES <targets>... [ENVIRONMENT <NAME=value>...] [CLASSIC_ONLY <patterns>...]
#              [PRECOMPILED <headers>...])
# Makes one GoogleTest executable of all sources under tests/<subfolder>. Every TEST is a test of ctest. With
# CLASSIC_ONLY, every TEST runs a second time with --grammar=rfc, as rfc.<name>, except those that match a pattern.
# PRECOMPILED headers are those that nearly all of the sources include.
function(kx_add_tests name subfolder)
    cmake_parse_arguments(PARSE_ARGV 2 ARG "" "" "LIBRARIES;ENVIRONMENT;CLASSIC_ONLY;PRECOMPILED")
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/${subfolder}/*.cpp")
    if(KX_SANITIZE STREQUAL "thread") # only the tests that start threads are run with it
        foreach(source IN LISTS sources)
            file(STRINGS "${source}" tests REGEX "^TEST" LIMIT_COUNT 1)
            file(STRINGS "${source}" threads REGEX "^TEST.*(Thread|Stress)" LIMIT_COUNT 1)
            if(tests AND NOT threads)
                list(REMOVE_ITEM sources "${source}")
            endif()
        endforeach()
    endif()
    if(NOT sources)
        message(STATUS "${name}: no sources")
        return()
    endif()
    add_executable(${name} ${sources})
    target_compile_definitions(${name} PRIVATE KX_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
    target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} GTest::gmock GTest::gtest GTest::gtest_main)
    # Descriptions of variables, and checks for undefined behaviour in the tests' own code, take half of the time in
    # which tests are compiled. The libraries, the tool and the programs that replay seeds keep the checks.
    target_compile_options(${name} PRIVATE -g1)
    if(KX_SANITIZE MATCHES "undefined")
        target_compile_options(${name} PRIVATE -fno-sanitize=undefined)
    endif()
    # g++ 12 reports impossible lengths inside std::string's own operators, at -O3 (see cmake/KxFlags.cmake).
    target_compile_options(${name} PRIVATE $<$<AND:$<CXX_COMPILER_ID:GNU>,$<CONFIG:Release>>:-Wno-stringop-overflow>)
    if(ARG_PRECOMPILED)
        target_precompile_headers(${name} PRIVATE ${ARG_PRECOMPILED})
    endif()
    set(properties TIMEOUT 300)
    if(ARG_ENVIRONMENT)
        list(APPEND properties ENVIRONMENT "${ARG_ENVIRONMENT}")
    endif()
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
    if(ARG_CLASSIC_ONLY)
        list(JOIN ARG_CLASSIC_ONLY ":" patterns)
        gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES ${properties}
            TEST_LIST ${name}_RFC_TESTS TEST_PREFIX "rfc." TEST_FILTER "-${patterns}" EXTRA_ARGS --grammar=rfc)
    endif()
endfunction()
