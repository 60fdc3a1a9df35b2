# Writes a man page: TEMPLATE with @VERSION@ and @HELP@ filled in, @HELP@ with what COMMAND prints. Run with cmake -P.
execute_process(COMMAND ${COMMAND} OUTPUT_VARIABLE HELP RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "'${COMMAND}' ended with ${result}; the man page needs its help text")
endif()

# Backslashes start escapes, hyphens would become typographic ones, and a leading dot or quote would be a request.
string(REPLACE "\\" "\\e" HELP "${HELP}")
string(REPLACE "-" "\\-" HELP "${HELP}")
string(REGEX REPLACE "(^|\n)([.'])" "\\1\\\\&\\2" HELP "${HELP}")
configure_file(${TEMPLATE} ${OUTPUT} @ONLY)
