# Turns the guide's page SOURCE (Markdown) into OUT (HTML) with CMARK and the
# frame in FRAME. Links between pages follow the change of the names' ends.
execute_process(COMMAND "${CMARK}" -e table --unsafe "${SOURCE}"
                OUTPUT_VARIABLE BODY RESULT_VARIABLE result)
if(result)
    message(FATAL_ERROR "${CMARK} failed on ${SOURCE}: ${result}")
endif()
string(REGEX REPLACE "href=\"([a-z]+)\\.md\"" "href=\"\\1.html\"" BODY "${BODY}")
string(REGEX MATCH "<h1>([^<]*)</h1>" heading "${BODY}")
set(TITLE "${CMAKE_MATCH_1}")
configure_file("${FRAME}" "${OUT}" @ONLY)
