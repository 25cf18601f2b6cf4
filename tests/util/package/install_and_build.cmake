# Installs the component, configures the consumer against it, builds and runs it.
cmake_minimum_required(VERSION 3.25)

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output
                    ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        string(JOIN " " command ${ARGN})
        message(FATAL_ERROR "${command}\n${output}")
    endif()
endfunction()

file(REMOVE_RECURSE "${WORK}")
run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${WORK}/prefix" --component util-dev)

# Every header that is installed must stand on its own.
foreach(header IN LISTS HEADERS)
    string(MAKE_C_IDENTIFIER "${header}" name)
    file(WRITE "${WORK}/alone/${name}.cpp" "#include \"${header}\"\n")
endforeach()

run("${CMAKE_COMMAND}" -S "${SOURCE}" -B "${WORK}/build" -G "${GENERATOR}"
    "-DCMAKE_PREFIX_PATH=${WORK}/prefix" "-DCMAKE_CXX_COMPILER=${COMPILER}"
    "-DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER}" "-DCMAKE_CXX_FLAGS=${FLAGS}"
    "-DHEADER_SOURCES=${WORK}/alone")
run("${CMAKE_COMMAND}" --build "${WORK}/build")
run("${WORK}/build/consumer")
