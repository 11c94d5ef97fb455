# The examples in the headers' head comments, cut out of them, are what ExamplesTest.cpp includes.
set(test "${CMAKE_CURRENT_LIST_DIR}/ExamplesTest.cpp")
set(cutter "${CMAKE_CURRENT_LIST_DIR}/Example.awk")
set(folder "${CMAKE_CURRENT_BINARY_DIR}/headers/examples")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${test}")

file(STRINGS "${test}" names REGEX "\\.example\"$")
list(TRANSFORM names REPLACE "^#include \"(.*)\\.example\"$" "\\1")
foreach(name IN LISTS names)
  set(header "${PROJECT_SOURCE_DIR}/utility/${name}.h")
  set(example "${folder}/${name}.example")
  cmake_path(GET example PARENT_PATH room)
  file(MAKE_DIRECTORY "${room}")
  add_custom_command(
    OUTPUT "${example}"
    COMMAND awk -f "${cutter}" "${header}" > "${example}"
    DEPENDS "${header}" "${cutter}"
    VERBATIM)
  target_sources(UtilityTests PRIVATE "${example}")
endforeach()
target_sources(UtilityTests PRIVATE "${test}")
set_source_files_properties("${test}" PROPERTIES INCLUDE_DIRECTORIES "${folder}")

add_test(NAME Sources.EveryExampleOfAHeaderIsRun COMMAND "${CMAKE_CURRENT_LIST_DIR}/CheckExamples.sh"
                                                         "${PROJECT_SOURCE_DIR}")
