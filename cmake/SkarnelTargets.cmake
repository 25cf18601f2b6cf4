# One target a folder, so that a wrong include does not link.
include(GoogleTest)

# skarnel_library(NAME SOURCES ... DEPS ... PRIVATE_DEPS ... [OWN_HEADERS])
# Makes the static library skarnel::NAME; headers are included from src/. With OWN_HEADERS it does
# without the shared headers, for libraries with options of their own for the compiler.
function(skarnel_library name)
    cmake_parse_arguments(arg "OWN_HEADERS" "" "SOURCES;DEPS;PRIVATE_DEPS" ${ARGN})
    if(arg_SOURCES)
        add_library(skarnel_${name} STATIC ${arg_SOURCES})
        target_include_directories(skarnel_${name} PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>")
        target_link_libraries(skarnel_${name} PUBLIC ${arg_DEPS} PRIVATE ${arg_PRIVATE_DEPS})
        if(SKARNEL_SHARED_HEADERS AND NOT arg_OWN_HEADERS)
            skarnel_core_headers(skarnel_${name})
        endif()
    else()
        add_library(skarnel_${name} INTERFACE)
        target_include_directories(skarnel_${name} INTERFACE "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>")
        target_link_libraries(skarnel_${name} INTERFACE ${arg_DEPS})
    endif()
    add_library(skarnel::${name} ALIAS skarnel_${name})
endfunction()

# skarnel_core_headers(TARGET)
# Lets the sources of the core share one precompiled header: a third of the time that one takes to
# compile goes into those of the standard library. Each source includes what it uses all the same,
# which the builds without SKARNEL_SHARED_HEADERS check.
function(skarnel_core_headers target)
    if(NOT TARGET skarnel_core_headers)
        add_library(skarnel_core_headers OBJECT "${PROJECT_SOURCE_DIR}/cmake/core_headers.cpp")
        target_precompile_headers(skarnel_core_headers PRIVATE <algorithm> <array> <bit> <cerrno> <cmath>
            <cstdint> <cstring> <functional> <limits> <memory> <optional> <span> <string> <string_view>
            <utility> <vector>)
        target_compile_options(skarnel_core_headers PRIVATE -fpch-preprocess)
    endif()
    target_precompile_headers(${target} REUSE_FROM skarnel_core_headers)
    target_compile_options(${target} PRIVATE -fpch-preprocess)
endfunction()

# skarnel_test_headers(NAME)
# Lets the sources of a test program share one precompiled header: most of the time that a test
# takes to compile goes into the headers of the test library. All such programs have the same
# options for the compiler, as it demands.
function(skarnel_test_headers name)
    if(NOT TARGET skarnel_test_headers)
        find_package(GTest REQUIRED)
        add_executable(skarnel_test_headers "${PROJECT_SOURCE_DIR}/tests/common_headers.cpp")
        target_link_libraries(skarnel_test_headers PRIVATE GTest::gmock GTest::gtest)
        target_precompile_headers(skarnel_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>
            <algorithm> <filesystem> <fstream> <functional> <map> <optional> <random> <sstream> <string>
            <vector>)
        skarnel_test_options(skarnel_test_headers)
    endif()
    target_precompile_headers(${name} REUSE_FROM skarnel_test_headers)
    skarnel_test_options(${name})
endfunction()

# skarnel_window_test_headers(NAME)
# The same for the programs in tests/qt: half of their time goes into the toolkit's headers. The
# toolkit asks for code that can be moved and names the folder of the tests, so these have a header
# of their own.
function(skarnel_window_test_headers name)
    if(NOT TARGET skarnel_window_test_headers)
        find_package(GTest REQUIRED)
        add_executable(skarnel_window_test_headers "${PROJECT_SOURCE_DIR}/tests/common_headers.cpp")
        target_link_libraries(skarnel_window_test_headers PRIVATE
            Qt6::Network Qt6::Test Qt6::Widgets GTest::gmock GTest::gtest)
        target_precompile_headers(skarnel_window_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>
            <QAction> <QApplication> <QComboBox> <QDir> <QLabel> <QLineEdit> <QMenu> <QMimeData> <QTest>
            <QTimer> <QUrl> <filesystem> <fstream> <functional> <optional> <string> <vector>)
        skarnel_test_options(skarnel_window_test_headers)
    endif()
    target_precompile_headers(${name} REUSE_FROM skarnel_window_test_headers)
    # What these headers declare depends on which of the toolkit's libraries are linked.
    target_link_libraries(${name} PRIVATE Qt6::Network Qt6::Test Qt6::Widgets)
    skarnel_test_options(${name})
endfunction()

# Tests are not optimized as what they test is, since they run once, and look for wrong addresses
# only: what else a sanitizer finds is wanted of the code under test. The C library's own checks of
# sizes need an optimizing compiler.
function(skarnel_test_options name)
    target_compile_options(${name} PRIVATE -fpch-preprocess
        $<$<CONFIG:Release>:-O0> $<$<CONFIG:Release>:-U_FORTIFY_SOURCE> $<$<CONFIG:Asan>:-O0>)
    if(SKARNEL_SANITIZE MATCHES "undefined")
        target_compile_options(${name} PRIVATE -fno-sanitize=undefined)
    endif()
endfunction()

# skarnel_test(NAME SOURCES ... DEPS ... [WHOLE] [OWN_HEADERS] [LABELS ...] [ENVIRONMENT ...]
#              [TIMEOUT s])
# One GoogleTest program. Each test becomes one ctest entry; with WHOLE the
# program is one entry, for programs whose start is expensive. With OWN_HEADERS it
# does without the shared headers, for programs whose libraries ask the compiler for
# options of their own, as the window toolkit does for code that can be moved.
function(skarnel_test name)
    if(NOT SKARNEL_TESTS)
        return()
    endif()
    cmake_parse_arguments(arg "WHOLE;OWN_HEADERS" "TIMEOUT" "SOURCES;DEPS;LABELS;ENVIRONMENT" ${ARGN})
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 120)
    endif()
    find_package(GTest REQUIRED)
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_DEPS} GTest::gmock GTest::gtest_main)
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests" "${PROJECT_SOURCE_DIR}/src")
    if(NOT arg_OWN_HEADERS)
        skarnel_test_headers(${name})
    endif()
    set(properties TIMEOUT ${arg_TIMEOUT})
    if(arg_LABELS)
        list(APPEND properties LABELS "${arg_LABELS}")
    endif()
    if(arg_ENVIRONMENT)
        list(APPEND properties ENVIRONMENT "${arg_ENVIRONMENT}")
    endif()
    if(arg_WHOLE)
        add_test(NAME ${name} COMMAND ${name})
        set_tests_properties(${name} PROPERTIES ${properties})
    else()
        gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
    endif()
endfunction()

# skarnel_use_highway(TARGET): Highway's headers, and what they call at run time. On x86 that is in
# src/imaging/kernels/highway_targets.cpp, which says why; elsewhere it is Highway's library.
# With SKARNEL_FEWER_TARGETS the kernels are compiled for x86's narrowest and widest vectors alone:
# all targets come from the same lines, and under sanitizers each takes half a minute.
function(skarnel_use_highway target)
    if(SKARNEL_FEWER_TARGETS)
        target_compile_definitions(${target} PRIVATE "HWY_DISABLED_TARGETS=(HWY_SSE4|HWY_AVX2)")
    endif()
    find_package(PkgConfig REQUIRED)
    pkg_check_modules(highway REQUIRED IMPORTED_TARGET libhwy)
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
        target_include_directories(${target} SYSTEM PRIVATE ${highway_INCLUDE_DIRS})
    else()
        target_link_libraries(${target} PRIVATE PkgConfig::highway)
    endif()
endfunction()
