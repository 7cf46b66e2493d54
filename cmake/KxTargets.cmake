# Each folder is a target. The functions glob for the sources, so that a new class needs no change here.

# kx_add_library(<name> ALIAS <Kx::Name> DEPENDS <targets>... [PRIVATE <targets>...])
# Makes the shared library <name> of all sources under the current folder. The sources are first compiled into the
# OBJECT library <name>_objects: a target that links the objects keeps those that only register themselves. A folder
# without sources becomes an interface target that passes its dependencies on. PRIVATE targets are not passed on to users.
function(kx_add_library name)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "ALIAS" "DEPENDS;PRIVATE")
    string(REGEX REPLACE "^Kx::" "" export_name "${ARG_ALIAS}")
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp")
    if(sources)
        add_library(${name}_objects OBJECT ${sources})
        target_include_directories(${name}_objects PUBLIC "${PROJECT_SOURCE_DIR}" "${KX_GENERATED_DIR}")
        target_link_libraries(${name}_objects PUBLIC ${ARG_DEPENDS} PRIVATE ${ARG_PRIVATE})
        target_compile_definitions(${name}_objects PRIVATE ${KX_PUBLIC_DEFINITIONS})
        add_library(${name} SHARED $<TARGET_OBJECTS:${name}_objects>)
        set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
            INSTALL_RPATH "$ORIGIN")
        target_link_libraries(${name} PRIVATE ${ARG_PRIVATE})
        set(scope PUBLIC)
    else()
        message(STATUS "${name}: no sources yet")
        add_library(${name} INTERFACE)
        set(scope INTERFACE)
    endif()
    target_link_libraries(${name} ${scope} ${ARG_DEPENDS})
    target_include_directories(${name} ${scope}
        "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR};${KX_GENERATED_DIR}>"
        "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/kxsipobject>")
    target_compile_features(${name} ${scope} cxx_std_20)
    target_compile_definitions(${name} ${scope} ${KX_PUBLIC_DEFINITIONS})
    set_target_properties(${name} PROPERTIES EXPORT_NAME ${export_name})
    add_library(${ARG_ALIAS} ALIAS ${name})
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
