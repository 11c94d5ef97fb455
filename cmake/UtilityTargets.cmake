# What the project's own targets have in common. Nothing here reaches those who use the library.

if(PROJECT_IS_TOP_LEVEL AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
  find_program(UTILITY_CCACHE ccache)
  mark_as_advanced(UTILITY_CCACHE)
  if(UTILITY_CCACHE)
    # What it needs to be told before it caches a unit that has a precompiled header.
    set(CMAKE_CXX_COMPILER_LAUNCHER
        ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
        ${UTILITY_CCACHE})
  endif()
endif()

# Warnings, the rules of arithmetic, and what every unit is compiled with.
function(utility_options target)
  target_compile_features(${target} PRIVATE cxx_std_20)
  # Sources have the same names for different things: they are not compiled together, whatever a host's own are.
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF CXX_VISIBILITY_PRESET hidden
                                             VISIBILITY_INLINES_HIDDEN ON UNITY_BUILD OFF)
  target_compile_options(
    ${target}
    PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion $<$<BOOL:${UTILITY_WERROR}>:-Werror>
            # A contracted multiplication and addition rounds once instead of twice: results would depend on the
            # processor.
            -ffp-contract=off
            # A fault of the processor may become a failure that is thrown: what is on the way must expect it anywhere.
            -fnon-call-exceptions)
  if(WIN32)
    target_compile_definitions(${target} PRIVATE _WIN32_WINNT=0x0A00 UNICODE _UNICODE)
    # The version that Wine's own symbol reader understands. And a register that an inline function leaves alone is not
    # free across its calls: the linker may take a copy of it that was compiled otherwise, and GCC does not see to that.
    target_compile_options(${target} PRIVATE -gdwarf-4 $<$<CXX_COMPILER_ID:GNU>:-fno-ipa-ra>)
  endif()
endfunction()

# The heavy headers of the standard library, or another one, compiled once for the target.
function(utility_precompile target)
  set(header "${PROJECT_SOURCE_DIR}/cmake/Precompiled.h" ${ARGN})
  list(GET header -1 header)
  target_precompile_headers(${target} PRIVATE "${header}")
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -fpch-preprocess)
  endif()
endfunction()

# Windows looks for a program's libraries beside it. Puts the runtime files into the current build folder, or that of
# each configuration in it, and, with LIBRARY, the library and its satellites too, so that the folder can be copied to
# another machine as it is. On Linux a program that has the library in it looks there for the programs that the library
# starts. Makes the target `name` for it.
function(utility_stage_runtime name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "LIBRARY" "" "")
  if(WIN32)
    set(all ALL)
    utility_runtime_files(files)
    if(arg_LIBRARY AND UTILITY_SATELLITES)
      get_target_property(satellites UtilitySatellites UTILITY_FILES)
      list(APPEND files ${satellites})
    endif()
    if(arg_LIBRARY AND UTILITY_SHARED)
      list(APPEND files Utility.dll)
    endif()
  else()
    set(all "")
    set(files UtilityCrashReport UtilityJobSupervisor)
  endif()
  set(folder "${CMAKE_CURRENT_BINARY_DIR}")
  get_property(has_configurations GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
  if(has_configurations)
    string(APPEND folder "/$<CONFIG>")
  endif()
  set(staged "")
  foreach(file IN LISTS files)
    cmake_path(GET file FILENAME filename)
    cmake_path(GET file STEM target)
    if(TARGET ${target})
      set(file $<TARGET_FILE:${target}>)
    endif()
    add_custom_command(
      OUTPUT "${folder}/${filename}"
      COMMAND ${CMAKE_COMMAND} -E copy "${file}" "${folder}/${filename}"
      DEPENDS "${file}"
      VERBATIM)
    list(APPEND staged "${folder}/${filename}")
  endforeach()
  add_custom_target(${name} ${all} DEPENDS ${staged})
  if(arg_LIBRARY AND WIN32 AND UTILITY_SATELLITES)
    add_dependencies(${name} UtilitySatellites)
  endif()
endfunction()

# The runtime files of the Windows build: the C++ runtime, of which the library and its host share one, since failures
# and streams cross between them, and zlib, which only those need who compress.
function(utility_runtime_files variable)
  set(files "")
  foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll zlib1.dll)
    execute_process(
      COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
      OUTPUT_VARIABLE file
      OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    if(NOT IS_ABSOLUTE "${file}")
      message(FATAL_ERROR "${CMAKE_CXX_COMPILER} has no ${name}")
    endif()
    cmake_path(NORMAL_PATH file)
    list(APPEND files "${file}")
  endforeach()
  set(${variable} "${files}" PARENT_SCOPE)
endfunction()
