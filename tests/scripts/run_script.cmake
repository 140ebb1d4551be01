# Runs one operator script in a directory of its own and compares the exit code.
# PROGRAM: kelvo. SCRIPT: the script. DIRECTORY: emptied, then the working directory. EXPECTED: the exit code.
# OPTIONS, ARGUMENTS: more of the command line, and what the script gets; joined by |.
file(REMOVE_RECURSE ${DIRECTORY})
file(MAKE_DIRECTORY ${DIRECTORY}/data)
# The machine's own settings must not reach a test, nor a test them.
set(ENV{XDG_CONFIG_HOME} ${DIRECTORY}/config)
set(ENV{XDG_DATA_HOME} ${DIRECTORY}/share)
string(REPLACE "|" ";" options "${OPTIONS}")
string(REPLACE "|" ";" arguments "${ARGUMENTS}")
if(arguments)
  list(PREPEND arguments --)
endif()
execute_process(
  COMMAND ${PROGRAM} --offscreen --virtual-time --data ${DIRECTORY}/data --transcript ${DIRECTORY}/transcript.jsonl
          ${options} --script ${SCRIPT} ${arguments}
  WORKING_DIRECTORY ${DIRECTORY}
  RESULT_VARIABLE result)
if(NOT "${result}" STREQUAL "${EXPECTED}")
  message(FATAL_ERROR "${SCRIPT}: exit code ${result}, expected ${EXPECTED}; see ${DIRECTORY}/transcript.jsonl")
endif()
