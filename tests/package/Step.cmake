# One step of the package tests, each a process of its own: cmake -D STEP=… -D … -P Step.cmake
#   install   builds the library if BUILD is not given, and installs it to PREFIX; with ABSOLUTE what is built there also
#             to that folder, each kind of file into an absolute folder of its own
#   headers   compares what is installed in PREFIX with what utility/Utility.h reaches
#   exports   compares the names that the library in PREFIX exports with the list of them
#   ask       configures the project in asked/, which looks for the package in PREFIX in several ways
#   use       configures, builds and runs the project in the folder PROGRAM, if not given user/, the WAY it says, with the
#             package in the folder PACKAGE, if not given that of PREFIX; in names/ the program is to refer to every
#             exported name; with BESIDE it is also run elsewhere, with the library's files beside it. With CONFIGURATION
#             the project has several, folders of its own for programs and libraries, and satellites. With REFUSED it is
#             not to be built, and that is to be in the first error.
#   packages  makes the packages of BUILD; the zip is unpacked to PREFIX, which has its name
# Common: SOURCE (of the library), VERSION, SHARED, SATELLITES (whether it has them), WORK (a folder for this step),
# OBJECTS (a script that names the library's objects, if there are any to take), OPTIONS for configuring, and what the
# library was configured with.

# The same compiler and target as the library, whichever project is configured. Nothing here is looked at with a
# debugger, and optimising takes the most time; without a precompiled header the compiler cache serves both builds.
set(generator Ninja)
if(CONFIGURATION)
  set(generator "Ninja Multi-Config")
  list(APPEND OPTIONS -DUTILITY_SATELLITES=ON -DCMAKE_CXX_FLAGS_DEBUG= "-DCMAKE_RUNTIME_OUTPUT_DIRECTORY=${WORK}/programs"
       "-DCMAKE_LIBRARY_OUTPUT_DIRECTORY=${WORK}/libraries")
endif()
set(configure
    ${CMAKE_COMMAND} -G "${generator}" "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}" "-DCMAKE_CXX_COMPILER_LAUNCHER=${CXX_LAUNCHER}"
    "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}" "-DUTILITY_SHARED=${SHARED}" -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON ${OPTIONS} -Wno-dev
    --no-warn-unused-cli --log-level=WARNING)
if(OBJECTS AND NOT DEFINED ENV{UTILITY_TEST_LONG})
  list(APPEND configure -C "${OBJECTS}")
endif()

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(check_names mode file)
  run("${CMAKE_CURRENT_LIST_DIR}/CheckNames.sh" ${mode} ${SYSTEM} "${CMAKE_CURRENT_LIST_DIR}/exported-names.txt" "${NM}" "${file}")
endfunction()

# The library that is somewhere in a folder has beside it what it looks for there.
function(check_beside_the_library place)
  file(GLOB_RECURSE library "${place}/libUtility.so" "${place}/Utility.dll" "${place}/libUtility.a")
  list(LENGTH library count)
  if(NOT count EQUAL 1)
    message(FATAL_ERROR "Libraries in ${place}: ${library}")
  endif()
  cmake_path(GET library PARENT_PATH folder)
  if(SATELLITES)
    file(GLOB satellites "${folder}/UtilityRes*.dll")
    list(LENGTH satellites count)
    if(NOT count EQUAL 11)
      message(FATAL_ERROR "Beside ${library} are the satellites ${satellites}")
    endif()
  endif()
  if(NOT TOOLCHAIN)
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
endfunction()

# What is installed is no news.
function(install_build)
  execute_process(COMMAND ${CMAKE_COMMAND} --install "${BUILD}" ${ARGV} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# Installs what BUILD has in PREFIX: to another place, from where it is moved there. Done twice it is the same, and the
# manifest has all of it, so that it can be taken away again.
function(install_and_move)
  set(stage "${PREFIX}-staged")
  file(REMOVE_RECURSE "${PREFIX}" "${stage}")
  set(ENV{DESTDIR} "${stage}")
  foreach(time once twice)
    install_build(--prefix /opt/utility)
  endforeach()
  unset(ENV{DESTDIR})
  file(READ "${BUILD}/install_manifest.txt" manifest)
  string(REPLACE "\n" ";" manifest "${manifest}")
  file(GLOB_RECURSE installed RELATIVE "${stage}" "${stage}/*")
  list(TRANSFORM installed PREPEND /)
  list(SORT manifest)
  list(SORT installed)
  if(NOT manifest STREQUAL installed)
    list(REMOVE_ITEM installed ${manifest})
    message(FATAL_ERROR "Installed, but not in ${BUILD}/install_manifest.txt: ${installed}")
  endif()
  file(RENAME "${stage}/opt/utility" "${PREFIX}")
  file(REMOVE_RECURSE "${stage}")
endfunction()

if(STEP STREQUAL "install")
  if(NOT BUILD)
    set(BUILD "${WORK}")
    # Libraries are in lib, which may be written in a roundabout way.
    run(${configure} --fresh -S "${SOURCE}" -B "${BUILD}" -DUTILITY_BUILD_TESTS=OFF -DUTILITY_BUILD_EXAMPLES=OFF
        -DCMAKE_INSTALL_LIBDIR=./lib)
    run(${CMAKE_COMMAND} --build "${BUILD}" -- --quiet)
  endif()
  install_and_move()
  if(ABSOLUTE)
    file(REMOVE_RECURSE "${ABSOLUTE}")
    run(${CMAKE_COMMAND} "-DCMAKE_INSTALL_PREFIX=${ABSOLUTE}" "-DCMAKE_INSTALL_LIBDIR=${ABSOLUTE}/libraries"
        "-DCMAKE_INSTALL_INCLUDEDIR=${ABSOLUTE}/headers" "-DCMAKE_INSTALL_BINDIR=${ABSOLUTE}/programs" --log-level=WARNING
        "${BUILD}")
    install_build()
  endif()
  foreach(document LICENSE README.md CHANGELOG.md docs/wing.svg)
    if(NOT EXISTS "${PREFIX}/share/doc/Utility/${document}")
      message(FATAL_ERROR "Not installed: ${document}")
    endif()
  endforeach()
  check_beside_the_library("${PREFIX}")

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

elseif(STEP STREQUAL "ask")
  file(REMOVE_RECURSE "${WORK}")
  run(${configure} -S "${CMAKE_CURRENT_LIST_DIR}/asked" -B "${WORK}" "-DVERSION=${VERSION}" "-DCMAKE_PREFIX_PATH=${PREFIX}"
      "-DCMAKE_FIND_ROOT_PATH=${PREFIX}")

elseif(STEP STREQUAL "use")
  if(NOT PROGRAM)
    set(PROGRAM user)
  endif()
  cmake_path(GET PROGRAM FILENAME program)
  file(REMOVE_RECURSE "${WORK}")
  if(WAY STREQUAL "find_package" AND SHARED)
    # What only the static library needs is not to be had.
    list(APPEND configure -DCMAKE_DISABLE_FIND_PACKAGE_SQLite3=ON -DCMAKE_DISABLE_FIND_PACKAGE_Threads=ON)
  endif()
  if(NOT PACKAGE)
    list(APPEND configure "-DCMAKE_PREFIX_PATH=${PREFIX}" "-DCMAKE_FIND_ROOT_PATH=${PREFIX}")
  elseif(WAY STREQUAL "find_package")
    list(APPEND configure "-DUtility_DIR=${PACKAGE}")
  else()
    set(ENV{PKG_CONFIG_PATH} "${PACKAGE}")
    cmake_path(SET root NORMALIZE "${PACKAGE}/../..")
    list(APPEND configure "-DCMAKE_FIND_ROOT_PATH=${root}")
  endif()
  if(SHARED OR TOOLCHAIN)
    # Nor are other packages.
    set(ENV{PKG_CONFIG_LIBDIR} /var/empty)
  endif()
  list(APPEND configure -S "${CMAKE_CURRENT_LIST_DIR}/${PROGRAM}" -B "${WORK}" "-DWAY=${WAY}" "-DUTILITY_SOURCE=${SOURCE}"
       "-DUTILITY_VERSION=${VERSION}")
  if(REFUSED)
    execute_process(COMMAND ${configure} RESULT_VARIABLE result OUTPUT_VARIABLE said ERROR_VARIABLE said)
    if(result EQUAL 0)
      execute_process(COMMAND ${CMAKE_COMMAND} --build "${WORK}" RESULT_VARIABLE result OUTPUT_VARIABLE said)
    endif()
    # It has to be in the first error, however the lines of that are broken.
    string(REGEX MATCH "[Ee]rror( at|:).*" first "${said}")
    string(REGEX REPLACE "[ \n]+" " " first "${first}")
    string(SUBSTRING "${first}" 0 400 first)
    string(FIND "${first}" "${REFUSED}" place)
    if(result EQUAL 0 OR place EQUAL -1)
      message(FATAL_ERROR "Not refused by \"${REFUSED}\" (${result}): ${said}")
    endif()
    return()
  endif()
  run(${configure})
  set(folder "${WORK}")
  if(CONFIGURATION)
    run(${CMAKE_COMMAND} --build "${WORK}" --config ${CONFIGURATION} -- --quiet)
    set(folder "${WORK}/programs/${CONFIGURATION}")
    check_beside_the_library("${WORK}")
  else()
    run(${CMAKE_COMMAND} --build "${WORK}" -- --quiet)
  endif()
  if(TOOLCHAIN)
    # A folder with the C++ runtime or all of it, if given, and the library's.
    set(ENV{WINEPATH} "Z:${RUNTIME};Z:${PREFIX}/bin")
    run(${EMULATOR} "${folder}/${program}.exe")
    if(BESIDE)
      unset(ENV{WINEPATH})
      file(COPY "${PREFIX}/bin/" "${folder}/${program}.exe" DESTINATION "${WORK}/beside")
      run(${EMULATOR} "${WORK}/beside/${program}.exe" WORKING_DIRECTORY /)
    endif()
  else()
    run("${folder}/${program}")
  endif()
  if(PROGRAM STREQUAL "names")
    file(GLOB object "${WORK}/CMakeFiles/names.dir/names.cpp.o" "${WORK}/CMakeFiles/names.dir/names.cpp.obj")
    check_names(referred "${object}")
  endif()

elseif(STEP STREQUAL "packages")
  # Who makes them may keep files to himself.
  run(sh -c "umask 027 && exec \"$@\"" sh ${CMAKE_COMMAND} --build "${BUILD}" --target packages -- --quiet)
  if(TOOLCHAIN)
    file(REMOVE_RECURSE "${PREFIX}")
    cmake_path(GET PREFIX PARENT_PATH folder)
    cmake_path(GET PREFIX FILENAME package)
    file(ARCHIVE_EXTRACT INPUT "${BUILD}/packages/${package}.zip" DESTINATION "${folder}")
  endif()

else()
  message(FATAL_ERROR "STEP is \"${STEP}\"")
endif()
