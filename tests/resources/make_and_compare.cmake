# Runs SCRIPT with PYTHON so that it writes MADE, and fails unless MADE equals KEPT.
execute_process(COMMAND "${PYTHON}" "${SCRIPT}" "${MADE}" RESULT_VARIABLE result)
if(result)
    message(FATAL_ERROR "${SCRIPT} failed: ${result}")
endif()
execute_process(COMMAND "${CMAKE_COMMAND}" -E compare_files "${MADE}" "${KEPT}" RESULT_VARIABLE result)
if(result)
    message(FATAL_ERROR "${MADE} differs from ${KEPT}")
endif()
