# Crashes, and looks at the report of that: cmake -D DEMO=… -D VIEW=… -D CAUSE=… -P CrashDemo.cmake
#   EMULATOR  runs the programs, if they are of another system
#   FOLDER    is where the reports go on Linux
#   MATCH     a regular expression for what is shown of the report
file(REMOVE_RECURSE "${FOLDER}")
set(ENV{XDG_DATA_HOME} "${FOLDER}")
function(run program argument)
  execute_process(
    COMMAND ${EMULATOR} "${program}" "${argument}"
    RESULT_VARIABLE status
    OUTPUT_VARIABLE output
    ERROR_VARIABLE errors)
  string(REPLACE "\r" "" output "${output}")
  set(status "${status}" PARENT_SCOPE)
  set(output "${output}" PARENT_SCOPE)
  set(errors "${errors}" PARENT_SCOPE)
endfunction()

run("${DEMO}" "${CAUSE}")
if(NOT output MATCHES "Its report is ([^\n]+[.]xml)\n" OR NOT status STREQUAL 0)
  message(FATAL_ERROR "There is no report, and the exit status is ${status}:\n${output}\n${errors}")
endif()
run("${VIEW}" "${CMAKE_MATCH_1}")
# Wine's own modules have variables without a place, at which a report breaks off.
if(NOT (status STREQUAL 0 OR (EMULATOR AND status STREQUAL 1)) OR NOT output MATCHES "${MATCH}" OR NOT output MATCHES "\nlog\n.*crash_demo ${CAUSE}: ")
  message(FATAL_ERROR "The exit status is ${status}, and this does not match ${MATCH}:\n${output}\n${errors}")
endif()
