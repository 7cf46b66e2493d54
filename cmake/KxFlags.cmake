# Language, warnings and instrumentation, the same for every target of the tree.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "" FORCE)
endif()
set(CMAKE_CXX_FLAGS_RELEASE "-O3 -g -DNDEBUG")
set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O2 -g")
set(CMAKE_CXX_FLAGS_DEBUG "-O1 -g1") # for the sanitizers, whose reports need lines; variables double the time

if(NOT CMAKE_CXX_COMPILER_LAUNCHER)
    find_program(KX_CCACHE ccache)
    mark_as_advanced(KX_CCACHE)
    if(KX_CCACHE)
        set(CMAKE_CXX_COMPILER_LAUNCHER "${KX_CCACHE}")
    endif()
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Wold-style-cast -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # g++ 12 reports overlapping copies inside std::string's own operators (GCC bug 105651). At -O3 it also reports
    # reads beyond the end of a literal "" in loops that never begin, since its length is 0. clang++ compiles the same
    # code with its warnings on.
    add_compile_options(-Wno-restrict $<$<CONFIG:Release>:-Wno-array-bounds>)
endif()

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

    # These have no measurable cost: copies of a known size are checked, and the tables through which functions are
    # called are read-only after a library is loaded. The stack protector does have a cost.
    add_compile_options($<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
    add_link_options(-Wl,-z,relro,-z,now)
    if(KX_STACK_PROTECTOR)
        add_compile_options(-fstack-protector-strong)
    endif()
endif()
