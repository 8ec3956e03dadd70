# What every target is compiled with, and which compilers are refused.

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    message(FATAL_ERROR
        "GCC ${CMAKE_CXX_COMPILER_VERSION} miscompiles coroutines (temporaries in co_await expressions are "
        "destroyed twice). Use clang 19: cmake --preset dev, or ./dev build.")
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)

# Qt's CMake files name libraries that a program need not use itself; each costs every start.
add_link_options(-Wl,--as-needed)

set(TARNWELL_SANITIZE "" CACHE STRING "Comma separated sanitizers for all targets, for instance address,undefined")
option(TARNWELL_WERROR "Treat warnings as errors" ON)

if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    add_link_options(-fuse-ld=lld)
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast
    -Wimplicit-fallthrough -Wextra-semi -Wunused -Wnull-dereference)
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    # A record that names the fields it sets and leaves the others to their defaults is how records are written here.
    add_compile_options(-Wno-missing-designated-field-initializers)
    # GCC 12's std::stable_sort uses a deprecated function of its own, which clang reports at the caller.
    add_compile_options(-Wno-deprecated-declarations)
endif()
if(TARNWELL_WERROR)
    add_compile_options(-Werror)
endif()

# Paths in debug information and assertions are relative to the tree: the same object for every clone, so that
# the compiler cache serves all of them.
add_compile_options("-ffile-prefix-map=${CMAKE_SOURCE_DIR}/=")

if(CMAKE_BUILD_TYPE STREQUAL "Release")
    include(CheckIPOSupported)
    # Hardening as Debian builds its packages.
    add_compile_options(-D_FORTIFY_SOURCE=2 -fstack-protector-strong)
    add_link_options(-Wl,-z,relro,-z,now)
else()
    add_compile_options(-fno-omit-frame-pointer -gsimple-template-names)
endif()

# libsecret asks for it, and objects share precompiled headers only with those compiled alike.
add_compile_options(-pthread)

if(TARNWELL_SANITIZE)
    add_compile_options("-fsanitize=${TARNWELL_SANITIZE}" -fno-sanitize-recover=all)
    add_link_options("-fsanitize=${TARNWELL_SANITIZE}" -fno-sanitize-recover=all)
endif()
if(TARNWELL_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

find_program(CCACHE ccache)
if(CCACHE AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_SOURCE_DIR}/cmake/compile.sh" "${CMAKE_SOURCE_DIR}")
    add_compile_options("SHELL:-Xclang -fno-pch-timestamp") # equal contents give an equal header
endif()
