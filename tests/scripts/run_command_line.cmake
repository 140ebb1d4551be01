# Starts the program with arguments that it answers at once, without a window.
# PROGRAM: kelvo. ARGUMENTS: divided by commas. EXPECTED: the exit code. STREAM: output or error.
# DIRECTORY: where it finds the user's data. TEXT: a regular expression for what that stream must hold; the other stream must stay empty.
cmake_policy(SET CMP0054 NEW)
# A Kelvo that runs on this machine with the user's own data stays out of it.
set(ENV{XDG_CONFIG_HOME} ${DIRECTORY}/config)
set(ENV{XDG_DATA_HOME} ${DIRECTORY}/share)
string(REPLACE "," ";" arguments "${ARGUMENTS}")
execute_process(COMMAND ${PROGRAM} ${arguments} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE error)
if(NOT "${result}" STREQUAL "${EXPECTED}")
  message(FATAL_ERROR "exit code ${result}, expected ${EXPECTED}\n${output}${error}")
endif()
if(NOT "${${STREAM}}" MATCHES "${TEXT}")
  message(FATAL_ERROR "expected \"${TEXT}\", got \"${${STREAM}}\"")
endif()
if(STREAM STREQUAL "error")
  set(silent "${output}")
else()
  set(silent "${error}")
endif()
if(NOT "${silent}" STREQUAL "")
  message(FATAL_ERROR "unexpected: \"${silent}\"")
endif()
