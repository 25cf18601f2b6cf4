# Compiler settings that every target of the project shares.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")

option(SKARNEL_WINDOW "Build the window (needs Qt 6)" ON)
option(SKARNEL_TESTS "Build the tests" ON)
option(SKARNEL_BENCH "Build the benchmarks" ON)
option(SKARNEL_FUZZ "Build the fuzz targets (their corpus replay is always built)" OFF)
option(SKARNEL_VECTOR "Build the vector kernels beside the scalar ones" ON)
option(SKARNEL_FEWER_TARGETS "Build them for the narrowest and the widest vectors only" OFF)
option(SKARNEL_SHARED_HEADERS "Precompile headers that many sources share" ON)
set(SKARNEL_SANITIZE "" CACHE STRING "Sanitizers to build with, e.g. address,undefined")
set(SKARNEL_HELP_HOST "skarnel.example" CACHE STRING "Host of the product's page that Help opens")

find_program(SKARNEL_CCACHE ccache)
if(SKARNEL_CCACHE)
    # The cache takes sources with a precompiled header only when times of files are left aside.
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime "${SKARNEL_CCACHE}")
    set(CMAKE_C_COMPILER_LAUNCHER "${SKARNEL_CCACHE}")
endif()
find_program(SKARNEL_LLD ld.lld)
if(SKARNEL_LLD)
    add_link_options(-fuse-ld=lld)
endif()

# Arithmetic is part of the product: no contraction of products and sums, no
# relaxed mathematics, on any target.
add_compile_options(
    -ffp-contract=off -fno-fast-math
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
    -Wimplicit-fallthrough -Wformat=2 -Wundef -Wdouble-promotion
    -Werror)
add_compile_definitions(_FILE_OFFSET_BITS=64)
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT SKARNEL_SANITIZE)
    add_compile_options($<$<CONFIG:Release>:-D_FORTIFY_SOURCE=2> -fstack-protector-strong)
    add_link_options(-Wl,-z,relro,-z,now)
endif()
if(SKARNEL_SANITIZE)
    add_compile_options(-fsanitize=${SKARNEL_SANITIZE} -fno-omit-frame-pointer
                        -fno-sanitize-recover=all -g1)
    add_link_options(-fsanitize=${SKARNEL_SANITIZE})
endif()
if(SKARNEL_FUZZ)
    # Another compiler finds other warnings; the fuzz build is for crashes.
    add_compile_options(-Wno-error)
endif()
