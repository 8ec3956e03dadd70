# The project's own way to declare libraries, tests and fuzz targets. Each takes a name and what it links.

set(TARNWELL_QT_DEFINITIONS
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY QT_NO_URL_CAST_FROM_STRING
    QT_NO_KEYWORDS      # libsecret's headers use "signals" as a name
    QT_NO_FOREACH QT_NO_NARROWING_CONVERSIONS_IN_CONNECT QT_DISABLE_DEPRECATED_BEFORE=0x060400)

# tarnwell_library(NAME [WIDGETS] [PUBLIC target...] [PRIVATE target...])
# A static library of one floor; its sources are added by target_sources in its folders. PRIVATE targets don't
# reach who links it: a floor's outside libraries stay its own.
function(tarnwell_library name)
    cmake_parse_arguments(arg "WIDGETS" "" "PUBLIC;PRIVATE" ${ARGN})
    add_library(${name} STATIC)
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
    target_compile_definitions(${name} PRIVATE ${TARNWELL_QT_DEFINITIONS})
    target_include_directories(${name} PUBLIC "${CMAKE_SOURCE_DIR}/src")
    target_link_libraries(${name} PUBLIC ${arg_PUBLIC} PRIVATE ${arg_PRIVATE})
    if(arg_WIDGETS)
        target_precompile_headers(${name} REUSE_FROM tarnwell_widgets_pch)
    else()
        target_precompile_headers(${name} REUSE_FROM tarnwell_core_pch)
    endif()
endfunction()

# tarnwell_module(TARGET NAME name SOURCES file... LIBS target...)
# libNAME.so, which the program loads when it is wanted (Helpers/ModuleLibrary.h): what no start should pay for.
set(TARNWELL_MODULES_IN_BUILD lib)
function(tarnwell_module target)
    cmake_parse_arguments(arg "" "NAME" "SOURCES;LIBS" ${ARGN})
    add_library(${target} MODULE ${arg_SOURCES})
    set_target_properties(${target} PROPERTIES AUTOMOC ON OUTPUT_NAME ${arg_NAME}
        LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/${TARNWELL_MODULES_IN_BUILD}")
    target_compile_definitions(${target} PRIVATE ${TARNWELL_QT_DEFINITIONS})
    target_include_directories(${target} PRIVATE "${CMAKE_SOURCE_DIR}/src")
    target_link_libraries(${target} PRIVATE ${arg_LIBS})
    include(GNUInstallDirs)
    install(TARGETS ${target} LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}/tarnwell")
endfunction()

find_program(LLVM_SYMBOLIZER NAMES llvm-symbolizer-19 llvm-symbolizer)
set(TARNWELL_TEST_ENVIRONMENT "QT_QPA_PLATFORM=offscreen"
    "LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/lsan.supp" "ASAN_SYMBOLIZER_PATH=${LLVM_SYMBOLIZER}")

# tarnwell_must_not_load(gui|qt PROGRAM): tests/house looks with ldd whether it does.
function(tarnwell_must_not_load kind program)
    set_property(GLOBAL APPEND_STRING PROPERTY TARNWELL_MUST_NOT_LOAD "${kind} $<TARGET_FILE:${program}>\n")
endfunction()

# tarnwell_test(NAME LIBS target... [LABELS label...] [LOCKS name...] [TIMEOUT seconds] [GUI])
# One QtTest program from NAME.cpp, run by ctest without a display. Tests with a lock in common never run side by side.
function(tarnwell_test name)
    cmake_parse_arguments(arg "GUI" "TIMEOUT" "LIBS;LABELS;LOCKS;SOURCES" ${ARGN})
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 120)
    endif()
    add_executable(${name} ${name}.cpp ${arg_SOURCES})
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
    target_compile_definitions(${name} PRIVATE ${TARNWELL_QT_DEFINITIONS})
    target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}/tests")
    target_link_libraries(${name} PRIVATE ${arg_LIBS} Qt6::Test)
    if(NOT arg_GUI)
        target_precompile_headers(${name} REUSE_FROM tarnwell_test_pch)
    endif()
    if(NOT arg_GUI)
        tarnwell_must_not_load(gui ${name})
    endif()
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT ${arg_TIMEOUT} LABELS "${arg_LABELS}" RESOURCE_LOCK "${arg_LOCKS}"
        ENVIRONMENT "${TARNWELL_TEST_ENVIRONMENT}"
        SKIP_REGULAR_EXPRESSION "SKIP   : [A-Za-z0-9_]+::initTestCase\\(\\)")
endfunction()

# tarnwell_fuzz_target(NAME LIBS target...)
# NAME.cpp holds LLVMFuzzerTestOneInput. With TARNWELL_FUZZ it becomes a libFuzzer program; otherwise a program that
# replays fuzz/corpus/NAME, which the ordinary test run does.
function(tarnwell_fuzz_target name)
    cmake_parse_arguments(arg "" "" "LIBS" ${ARGN})
    add_executable(${name} ${name}.cpp)
    target_compile_definitions(${name} PRIVATE ${TARNWELL_QT_DEFINITIONS})
    target_link_libraries(${name} PRIVATE ${arg_LIBS})
    if(arg_LIBS STREQUAL "tarnwell_vt")
        tarnwell_must_not_load(qt ${name})
    else()
        tarnwell_must_not_load(gui ${name})
    endif()
    if(TARNWELL_FUZZ)
        target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    else()
        target_sources(${name} PRIVATE replay.cpp)
        add_test(NAME replay_${name} COMMAND ${name} "${CMAKE_SOURCE_DIR}/fuzz/corpus/${name}")
        set_tests_properties(replay_${name} PROPERTIES TIMEOUT 300 LABELS corpus
            ENVIRONMENT "${TARNWELL_TEST_ENVIRONMENT}")
    endif()
endfunction()
