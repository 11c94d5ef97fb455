# Resource-only modules: PE files that hold nothing but resources, the same on every system.

find_program(UTILITY_WINDRES NAMES x86_64-w64-mingw32-windres windres)
find_program(UTILITY_RESOURCE_LINKER NAMES x86_64-w64-mingw32-ld)
mark_as_advanced(UTILITY_WINDRES UTILITY_RESOURCE_LINKER)

# utility_resource_library(FILE SOURCE [DEFINITION...] [DEPENDS FILE...]) makes FILE in the current build folder of the
# resource script SOURCE, which may include files from the project's folder: those after DEPENDS. The caller has a
# target depend on FILE.
function(utility_resource_library file source)
  if(NOT UTILITY_WINDRES OR NOT UTILITY_RESOURCE_LINKER)
    message(FATAL_ERROR "No windres and ld of mingw-w64, which make ${file}: install the package binutils-mingw-w64-x86-64, "
                        "or go without satellites and tests: -D UTILITY_SATELLITES=OFF -D UTILITY_BUILD_TESTS=OFF")
  endif()
  cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}")
  set(object "${file}.o")
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "DEPENDS")
  list(TRANSFORM arg_UNPARSED_ARGUMENTS PREPEND -D OUTPUT_VARIABLE definitions)
  add_custom_command(
    OUTPUT "${file}"
    COMMAND "${UTILITY_WINDRES}" -I "${PROJECT_SOURCE_DIR}" ${definitions} "${source}" -O coff -o "${object}"
    COMMAND "${UTILITY_RESOURCE_LINKER}" -shared -e 0 --no-insert-timestamp -o "${file}" "${object}"
    DEPENDS "${source}" ${arg_DEPENDS}
    VERBATIM)
endfunction()
