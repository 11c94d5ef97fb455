# What a user chooses holds from the next start of a program on: cmake -D PROGRAM=… -D EMULATOR=… -P
# DisplayLanguage.cmake
function(run)
  execute_process(COMMAND ${EMULATOR} "${PROGRAM}" ${ARGN} OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
  set(output "${output}" PARENT_SCOPE)
endfunction()

run(0407)
run()
set(german "${output}")
run(0809)
run()
set(english "${output}")
# Nothing is compared before the choice is cleared: the next to start a program is to have his own language.
run(0000)

if(NOT german MATCHES "\\* German  Deutsch.*\nDateiende beim Lesen einer ganzen Zahl erreicht\\.")
  message(FATAL_ERROR "With German chosen the output is\n${german}")
endif()
if(NOT english MATCHES "\\* English  English.*\nEnd of file found whilst trying to read an integer number\\.")
  message(FATAL_ERROR "With English chosen the output is\n${english}")
endif()
