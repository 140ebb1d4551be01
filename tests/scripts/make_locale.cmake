# Makes the locale LOCALE in DIRECTORY and sees that it has a decimal comma: under a locale that the system lacks a program
# would run in the C locale, and tests under it could not fail.
file(MAKE_DIRECTORY ${DIRECTORY})
string(REGEX MATCH "^[^.]+" language ${LOCALE})
execute_process(COMMAND localedef -i ${language} -f UTF-8 ${DIRECTORY}/${LOCALE} RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "localedef: ${result}")
endif()
set(ENV{LOCPATH} ${DIRECTORY})
set(ENV{LC_ALL} ${LOCALE})
execute_process(COMMAND locale decimal_point OUTPUT_VARIABLE point OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT point STREQUAL ",")
  message(FATAL_ERROR "the decimal point of ${LOCALE} is ${point}")
endif()
