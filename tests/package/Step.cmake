# One step of the package tests, each a process of its own: cmake -D STEP=… -D … -P Step.cmake
#   install   builds the library if BUILD is not given, and installs it to PREFIX
#   headers   compares what is installed in PREFIX with what utility/Utility.h reaches
#   exports   compares the names that the library in PREFIX exports with the list of them
#   use       configures, builds and runs the project in the folder PROGRAM, if not given user/, the WAY it says;
#             in names/ the program is to refer to every exported name; with BESIDE it is also run elsewhere, with the
#             library's files beside it
#   packages  makes the packages of BUILD; the zip is unpacked to PREFIX, which has its name
#   paths     looks for the folders of the library and of its build in what is in PREFIX
# Common: SOURCE (of the library), SHARED, SATELLITES (whether it has them), WORK (a folder for this step), OBJECTS (a
# script that names the library's objects, if there are any to take), and what the library was configured with.

# The same compiler and target as the library, whichever project is configured. Nothing here is looked at with a
# debugger, and optimising takes the most time; without a precompiled header the compiler cache serves both builds.
set(configure
    ${CMAKE_COMMAND} --fresh -G Ninja "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}" "-DCMAKE_CXX_COMPILER_LAUNCHER=${CXX_LAUNCHER}"
    "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}" "-DUTILITY_SHARED=${SHARED}" -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON -Wno-dev --no-warn-unused-cli
    --log-level=WARNING)
if(OBJECTS AND NOT DEFINED ENV{UTILITY_TEST_LONG})
  list(APPEND configure -C "${OBJECTS}")
endif()

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(check_names mode file)
  run("${CMAKE_CURRENT_LIST_DIR}/CheckNames.sh" ${mode} ${SYSTEM} "${CMAKE_CURRENT_LIST_DIR}/exported-names.txt" "${NM}" "${file}")
endfunction()

if(STEP STREQUAL "install")
  file(REMOVE_RECURSE "${PREFIX}")
  if(NOT BUILD)
    set(BUILD "${WORK}")
    run(${configure} -S "${SOURCE}" -B "${BUILD}" -DUTILITY_BUILD_TESTS=OFF -DUTILITY_BUILD_EXAMPLES=OFF)
    run(${CMAKE_COMMAND} --build "${BUILD}" -- --quiet)
  endif()
  run(${CMAKE_COMMAND} --install "${BUILD}" --prefix "${PREFIX}")
  if(SHARED AND SATELLITES)
    file(GLOB_RECURSE library "${PREFIX}/libUtility.so" "${PREFIX}/Utility.dll")
    cmake_path(GET library PARENT_PATH folder)
    file(GLOB satellites "${folder}/UtilityRes*.dll")
    list(LENGTH satellites count)
    if(NOT count EQUAL 11)
      message(FATAL_ERROR "Beside ${library} are the satellites ${satellites}")
    endif()
  endif()

  if(NOT TOOLCHAIN)
    file(GLOB_RECURSE library "${PREFIX}/libUtility.so" "${PREFIX}/libUtility.a")
    cmake_path(GET library PARENT_PATH folder)
    # Without an owner the supervisor of a job has nothing to do.
    execute_process(COMMAND "${folder}/UtilityJobSupervisor" INPUT_FILE /dev/null RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
      message(FATAL_ERROR "${folder}/UtilityJobSupervisor: ${result}")
    endif()
    # Without a request the program that writes crash reports ends with 2.
    execute_process(COMMAND "${folder}/UtilityCrashReport" INPUT_FILE /dev/null RESULT_VARIABLE result)
    if(NOT result EQUAL 2)
      message(FATAL_ERROR "${folder}/UtilityCrashReport: ${result}")
    endif()
  endif()

elseif(STEP STREQUAL "headers")
  execute_process(
    COMMAND ${CXX_COMPILER} -std=c++20 -MM -I "${SOURCE}" -isystem "${BOOST_INCLUDE}" "${SOURCE}/utility/Utility.h"
    OUTPUT_VARIABLE rule COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "[^ \\\n]+\\.(h|inc)" reached "${rule}")
  list(TRANSFORM reached REPLACE "^${SOURCE}/" "")
  list(REMOVE_DUPLICATES reached)
  list(SORT reached)
  file(GLOB_RECURSE installed RELATIVE "${PREFIX}/include" "${PREFIX}/include/*")
  list(SORT installed)
  if(NOT installed STREQUAL reached)
    list(JOIN reached "\n  " reached)
    list(JOIN installed "\n  " installed)
    message(FATAL_ERROR "utility/Utility.h reaches\n  ${reached}\nbut installed is\n  ${installed}")
  endif()

elseif(STEP STREQUAL "exports")
  file(GLOB_RECURSE library "${PREFIX}/libUtility.so" "${PREFIX}/libUtility.dll.a")
  check_names(exports "${library}")

elseif(STEP STREQUAL "use")
  if(NOT PROGRAM)
    set(PROGRAM user)
  endif()
  cmake_path(GET PROGRAM FILENAME program)
  file(REMOVE_RECURSE "${WORK}")
  run(${configure} -S "${CMAKE_CURRENT_LIST_DIR}/${PROGRAM}" -B "${WORK}" "-DWAY=${WAY}" "-DUTILITY_SOURCE=${SOURCE}"
      "-DCMAKE_PREFIX_PATH=${PREFIX}" "-DCMAKE_FIND_ROOT_PATH=${PREFIX}")
  run(${CMAKE_COMMAND} --build "${WORK}" -- --quiet)
  if(EXISTS "${WORK}/${program}.exe")
    # The library's folder and that of the C++ runtime.
    set(ENV{WINEPATH} "Z:${PREFIX}/bin;Z:${RUNTIME}")
    run(${EMULATOR} "${WORK}/${program}.exe")
    if(BESIDE)
      unset(ENV{WINEPATH})
      file(COPY "${PREFIX}/bin/" "${WORK}/${program}.exe" DESTINATION "${WORK}/beside")
      run(${EMULATOR} "${WORK}/beside/${program}.exe" WORKING_DIRECTORY /)
    endif()
  else()
    run("${WORK}/${program}")
  endif()
  if(PROGRAM STREQUAL "names")
    file(GLOB object "${WORK}/CMakeFiles/names.dir/names.cpp.o" "${WORK}/CMakeFiles/names.dir/names.cpp.obj")
    check_names(referred "${object}")
  endif()

elseif(STEP STREQUAL "packages")
  run(${CMAKE_COMMAND} --build "${BUILD}" --target packages -- --quiet)
  if(TOOLCHAIN)
    file(REMOVE_RECURSE "${PREFIX}")
    cmake_path(GET PREFIX PARENT_PATH folder)
    cmake_path(GET PREFIX FILENAME package)
    file(ARCHIVE_EXTRACT INPUT "${BUILD}/packages/${package}.zip" DESTINATION "${folder}")
  endif()

elseif(STEP STREQUAL "paths")
  execute_process(COMMAND grep -rlF -e "${SOURCE}" -e "${BUILD}" "${PREFIX}" OUTPUT_VARIABLE files RESULT_VARIABLE result)
  if(NOT result EQUAL 1)
    message(FATAL_ERROR "These name the folder that they were made in:\n${files}")
  endif()

else()
  message(FATAL_ERROR "STEP is \"${STEP}\"")
endif()
