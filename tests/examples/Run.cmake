# Runs a program and compares: cmake -D PROGRAM=… -D "ARGUMENTS=…;…" -D STATUS=… -P Run.cmake
#   EMULATOR  runs the program, if it is of another system
#   OUTPUT    a file that the standard output has to equal, but for line ends
#   BYTES     a file that the standard output has to equal in every byte
#   MATCH     a regular expression for the standard output
#   ERRORS    a regular expression for the standard error stream, which is empty without it
#   SAVED, CONTENT  a file, and what is in it afterwards
#   WRITTEN   a file, and a regular expression for what is in it afterwards; WRITTEN2 likewise
#   SAME, AS  two files that have to be equal afterwards
#   COPY, TO  a file to be copied beforehand; SAME is removed then
#   INPUT     a file for the standard input
if(COPY)
  configure_file("${COPY}" "${TO}" COPYONLY)
  if(SAME)
    file(REMOVE "${SAME}")
  endif()
endif()
set(input "")
if(INPUT)
  set(input INPUT_FILE "${INPUT}")
endif()
macro(run)
  execute_process(
    COMMAND ${EMULATOR} "${PROGRAM}" ${ARGUMENTS} ${input}
    RESULT_VARIABLE status
    OUTPUT_VARIABLE output
    ERROR_VARIABLE errors)
endmacro()

run()
# On a busy machine Wine now and then gives up on a program before that begins: with 1, and without a word.
if(EMULATOR AND status STREQUAL 1 AND output STREQUAL "" AND errors STREQUAL "")
  run()
endif()
if(BYTES)
  file(READ "${BYTES}" expected)
  if(NOT output STREQUAL expected)
    message(FATAL_ERROR "The output is\n${output}\ninstead of\n${expected}")
  endif()
endif()
string(REPLACE "\r" "" output "${output}")
string(REPLACE "\r" "" errors "${errors}")
if(NOT status STREQUAL STATUS)
  message(FATAL_ERROR "The exit status is ${status}, not ${STATUS}.\n${output}\n${errors}")
endif()
if(OUTPUT)
  file(READ "${OUTPUT}" expected)
  if(NOT output STREQUAL expected)
    message(FATAL_ERROR "The output is\n${output}\ninstead of\n${expected}")
  endif()
endif()
if(SAVED)
  file(READ "${SAVED}" saved)
  if(NOT saved STREQUAL CONTENT)
    message(FATAL_ERROR "${SAVED} is\n${saved}")
  endif()
endif()
if(SAME)
  execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files "${SAME}" "${AS}" COMMAND_ERROR_IS_FATAL ANY)
endif()
if(NOT output MATCHES "${MATCH}")
  message(FATAL_ERROR "The output does not match ${MATCH}:\n${output}")
endif()
if(NOT errors STREQUAL "" AND NOT ERRORS OR NOT errors MATCHES "${ERRORS}")
  message(FATAL_ERROR "The standard error stream is\n${errors}")
endif()
foreach(written IN ITEMS WRITTEN WRITTEN2)
  if(${written})
    list(POP_FRONT ${written} file expression)
    file(READ "${file}" text)
    if(NOT text MATCHES "${expression}")
      message(FATAL_ERROR "${file} does not match ${expression}:\n${text}")
    endif()
  endif()
endforeach()
