# Language, warnings and instrumentation, the same for every target of this project. What is set here is not seen by a
# project that has this one as a sub-project; its flags, build type, output folders and hardening are kept.

if(NOT CMAKE_CXX_STANDARD MATCHES "^2[0-9]$") # a later standard is kept
    set(CMAKE_CXX_STANDARD 20)
endif()
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_UNITY_BUILD OFF) # files have anonymous names in common
if(NOT DEFINED BUILD_SHARED_LIBS)
    set(BUILD_SHARED_LIBS ON)
endif()

if(PROJECT_IS_TOP_LEVEL)
    set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
    set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
    set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
    if(NOT CMAKE_BUILD_TYPE)
        set(CMAKE_BUILD_TYPE RelWithDebInfo)
    endif()
    if(NOT CMAKE_CXX_COMPILER_LAUNCHER)
        find_program(KX_CCACHE ccache)
        mark_as_advanced(KX_CCACHE)
        if(KX_CCACHE)
            set(CMAKE_CXX_COMPILER_LAUNCHER "${KX_CCACHE}")
        endif()
    endif()
    add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Wold-style-cast)
endif()
if(KX_WERROR)
    add_compile_options(-Werror)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # g++ 12 reports overlapping copies inside std::string's own operators (GCC bug 105651). At -O3 it also reports
    # reads beyond the end of a literal "" in loops that never begin, since its length is 0. clang++ compiles the same
    # code with its warnings on.
    add_compile_options(-Wno-restrict $<$<CONFIG:Release>:-Wno-array-bounds>)
endif()

# Assertions tell their file from the root of the sources, so that no library has the path of the machine that built it.
# Neither have a release's debug symbols; those of other builds keep it, for debuggers and coverage.
set(prefix_map "-fmacro-prefix-map=")
if(PROJECT_IS_TOP_LEVEL)
    set(prefix_map "$<IF:$<CONFIG:Release>,-ffile-prefix-map=,-fmacro-prefix-map=>")
endif()
add_compile_options("${prefix_map}${PROJECT_SOURCE_DIR}/=" "${prefix_map}${PROJECT_BINARY_DIR}/=")

if(KX_HARDEN)
    add_compile_definitions(_GLIBCXX_ASSERTIONS)
endif()

if(KX_SANITIZE)
    list(JOIN KX_SANITIZE "," KX_SANITIZE_LIST)
    add_compile_options(-fsanitize=${KX_SANITIZE_LIST} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${KX_SANITIZE_LIST})
    # Pools would hide a use after free or an overrun of one byte from the sanitizer. A public header reads this
    # definition, so the users of the libraries get it too.
    set(KX_PUBLIC_DEFINITIONS KX_PLAIN_MALLOC=1)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # The instrumented code misleads the flow-based warnings; the other builds keep them.
        add_compile_options(-Wno-maybe-uninitialized -Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread
                            -Wno-null-dereference -Wno-tsan)
    endif()
endif()

if(KX_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        message(FATAL_ERROR "KX_FUZZ needs clang")
    endif()
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(KX_COVERAGE)
    if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        # The counters are in the profile file itself, so that programs that end by an assertion are counted too.
        add_compile_options(-fprofile-instr-generate -fcoverage-mapping "SHELL:-mllvm -runtime-counter-relocation")
        add_link_options(-fprofile-instr-generate)
    else()
        add_compile_options(--coverage)
        add_link_options(--coverage)
    endif()
endif()

if(NOT KX_SANITIZE AND NOT KX_FUZZ AND NOT KX_COVERAGE)
    # Functions of these libraries are not interposed, so calls within a library may be direct.
    add_compile_options(-fno-plt -fno-semantic-interposition)
    add_link_options(-Wl,-Bsymbolic-functions -Wl,-O1)
endif()

if(PROJECT_IS_TOP_LEVEL AND NOT KX_SANITIZE AND NOT KX_FUZZ AND NOT KX_COVERAGE)
    # These have no measurable cost: copies of a known size are checked, and the tables through which functions are
    # called are read-only after a library is loaded. The stack protector does have a cost.
    add_compile_options($<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
    add_link_options(-Wl,-z,relro,-z,now)
    if(KX_STACK_PROTECTOR)
        add_compile_options(-fstack-protector-strong)
    endif()
endif()
