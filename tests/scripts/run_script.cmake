# Runs operator scripts one after the other in a directory of their own and compares each exit code.
# PROGRAM: kelvo. SCRIPTS: the scripts, divided by commas; each is a start of the program, with the data that the one
# before left. DIRECTORY: emptied, then the working directory. PREPARED: if it is a directory, its contents stand in
# DIRECTORY before the first start (data/ are the program's settings). ARGUMENTS: more for the command line, divided by
# commas, THEN_ARGUMENTS those of the starts after the first. EXPECTED: the exit code, or by start, divided by commas. OWN_DIRECTORY: true leaves it to the program where its data are. CAMERA: true leaves the
# machine wired as it ships (DEFAULTS), with the simulated camera, and the host frames few; otherwise (and unless the program finds its own
# directory) no head and no board are wired to it.
if("$ENV{KELVO_SECOND_LOCALE}" STREQUAL "ALL_ROUNDS" AND NOT "$ENV{KELVO_LONG}" STREQUAL "full")
  message("left to all rounds (KELVO_LONG=full)")
  return()
endif()
file(REMOVE_RECURSE ${DIRECTORY})
file(MAKE_DIRECTORY ${DIRECTORY}/data)
if(IS_DIRECTORY ${PREPARED})
  file(COPY ${PREPARED}/ DESTINATION ${DIRECTORY})
endif()
if(NOT OWN_DIRECTORY AND NOT EXISTS ${DIRECTORY}/data/platform.ini)
  set(wiring "[Ports]\nCOM2=none\n[Board]\nBoard=none\n")
  if(CAMERA)
    # 64 frames of the shipped camera, and the ten that stay free.
    file(READ ${DEFAULTS}/platform.ini wiring)
    string(REPLACE "Limit=0" "Limit=12124160" wiring "${wiring}")
  endif()
  file(WRITE ${DIRECTORY}/data/platform.ini "${wiring}")
endif()
# The machine's own settings must not reach a test, nor a test them.
set(ENV{XDG_CONFIG_HOME} ${DIRECTORY}/config)
set(ENV{XDG_DATA_HOME} ${DIRECTORY}/share)
set(ENV{XDG_STATE_HOME} ${DIRECTORY}/state)
set(ENV{XDG_CACHE_HOME} ${DIRECTORY}/cache)
# Nor are its services asked to stay awake, or to show notes.
set(ENV{DBUS_SYSTEM_BUS_ADDRESS} unix:path=${DIRECTORY}/nobody)
set(ENV{DBUS_SESSION_BUS_ADDRESS} unix:path=${DIRECTORY}/nobody)
string(REPLACE "," ";" arguments "${ARGUMENTS}")
string(REPLACE "," ";" then_arguments "${THEN_ARGUMENTS}")
string(REPLACE "," ";" scripts "${SCRIPTS}")
string(REPLACE "," ";" codes "${EXPECTED}")
set(data --data ${DIRECTORY}/data)
if(OWN_DIRECTORY)
  set(data)
endif()
foreach(script IN LISTS scripts)
  get_filename_component(name ${script} NAME_WE)
  set(transcript ${DIRECTORY}/${name}.jsonl)
  execute_process(
    COMMAND ${PROGRAM} --offscreen --virtual-time ${data} --transcript ${transcript} --script ${script}
            ${arguments}
    WORKING_DIRECTORY ${DIRECTORY}
    RESULT_VARIABLE result)
  set(arguments ${then_arguments})
  list(GET codes 0 expected)
  list(LENGTH codes left)
  if(left GREATER 1)
    list(POP_FRONT codes)
  endif()
  if(NOT "${result}" STREQUAL "${expected}")
    message(FATAL_ERROR "${script}: exit code ${result}, expected ${expected}; see ${transcript}")
  endif()
endforeach()
