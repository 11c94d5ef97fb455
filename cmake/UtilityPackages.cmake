# Packages of the library, which the target `packages` makes in the build's folder packages/: on Linux the Debian
# packages libutility and libutility-dev, for Windows a zip that is unpacked anywhere. Included where the library is
# shared and the project itself.

set(packages_folder "${PROJECT_BINARY_DIR}/packages")

if(NOT WIN32 AND NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  # What is installed in /usr goes to other folders, and says so: it is of a build of its own, with this one's objects.
  add_custom_target(
    packages
    COMMAND
      ${CMAKE_COMMAND} -G ${CMAKE_GENERATOR} -S "${PROJECT_SOURCE_DIR}" -B "${packages_folder}/debian" -C
      "${PROJECT_BINARY_DIR}/Objects$<CONFIG>.cmake" -DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_BUILD_TYPE=$<CONFIG>
      "-DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER}" -DUTILITY_SATELLITES=${UTILITY_SATELLITES} -DUTILITY_BUILD_TESTS=OFF
      -DUTILITY_BUILD_EXAMPLES=OFF "-DCMAKE_CXX_FLAGS=${CMAKE_CXX_FLAGS}" "-DCPACK_PACKAGE_DIRECTORY=${packages_folder}"
    COMMAND ${CMAKE_COMMAND} --build "${packages_folder}/debian" --target packages
    DEPENDS Utility
    USES_TERMINAL VERBATIM)
  return()
endif()

set(CPACK_PACKAGE_DIRECTORY "${packages_folder}" CACHE PATH "Where packages go")
mark_as_advanced(CPACK_PACKAGE_DIRECTORY)
set(CPACK_PACKAGE_CONTACT "The Utility authors <utility@example.org>" CACHE STRING "Who maintains the packages")
mark_as_advanced(CPACK_PACKAGE_CONTACT)
set(CPACK_COMPONENTS_ALL Utility_Runtime Utility_Development)
set(CPACK_STRIP_FILES ON)
set(CPACK_UTILITY_STRIP "${CMAKE_STRIP}")
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/PackagedFiles.cmake")
set(CPACK_VERBATIM_VARIABLES ON)

if(WIN32)
  set(CPACK_GENERATOR ZIP)
else()
  set(CPACK_GENERATOR DEB)
  set(CPACK_DEB_COMPONENT_INSTALL ON)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
  set(CPACK_POST_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/DebianSizes.cmake")
  set(CPACK_DEBIAN_PACKAGE_SOURCE utility)
  set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
  set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
  set(version "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")

  set(CPACK_DEBIAN_UTILITY_RUNTIME_PACKAGE_NAME libutility)
  set(CPACK_DEBIAN_UTILITY_RUNTIME_PACKAGE_SECTION libs)
  set(CPACK_DEBIAN_UTILITY_RUNTIME_DESCRIPTION
      "${PROJECT_DESCRIPTION}
Mapped files, cursors over records, numbers as text, messages, settings, the
display language, reports of crashes, jobs, archives, and what else such an
application stands on.
.
This package has what its programs need to run.")
  # What the library loads when it is first asked for: zlib, without which a compressed file lacks its text; libdw for
  # the calls of a crash report; minizip for archives; libsystemd to hand a mail to the desktop.
  set(CPACK_DEBIAN_UTILITY_RUNTIME_PACKAGE_DEPENDS "libsqlite3-0, zlib1g")
  set(CPACK_DEBIAN_UTILITY_RUNTIME_PACKAGE_RECOMMENDS "libdw1, libminizip1, libsystemd0")
  # And for boxes, the clipboard, mail without the desktop's portal, and keys.
  set(CPACK_DEBIAN_UTILITY_RUNTIME_PACKAGE_SUGGESTS "zenity | kdialog, wl-clipboard | xclip | xsel, xdg-utils, libxcb1")
  # What was built with this version runs with every later one that has the same major version.
  get_target_property(so_version Utility SOVERSION)
  file(WRITE "${packages_folder}/shlibs" "libUtility ${so_version} libutility (>= ${PROJECT_VERSION})\n")
  file(WRITE "${packages_folder}/triggers" "activate-noawait ldconfig\n")
  set(CPACK_DEBIAN_UTILITY_RUNTIME_PACKAGE_CONTROL_EXTRA "${packages_folder}/shlibs" "${packages_folder}/triggers")

  set(CPACK_DEBIAN_UTILITY_DEVELOPMENT_PACKAGE_NAME libutility-dev)
  set(CPACK_DEBIAN_UTILITY_DEVELOPMENT_PACKAGE_SECTION libdevel)
  set(CPACK_DEBIAN_UTILITY_DEVELOPMENT_DESCRIPTION
      "${PROJECT_DESCRIPTION} - development
Headers in C++20, packages for CMake and pkg-config, and documents: what it
takes to build programs with libutility.")
  set(CPACK_DEBIAN_UTILITY_DEVELOPMENT_PACKAGE_DEPENDS
      "libutility (= ${version}), libboost-dev (>= 1.74), libboost-filesystem-dev (>= 1.74)")
  set(CPACK_DEBIAN_UTILITY_DEVELOPMENT_PACKAGE_RECOMMENDS "g++ (>= 4:12) | clang (>= 1:14)")
  set(CPACK_DEBIAN_UTILITY_DEVELOPMENT_PACKAGE_SUGGESTS "cmake, pkgconf | pkg-config")
endif()

include(CPack)
add_custom_target(
  packages
  COMMAND ${CMAKE_CPACK_COMMAND} --config "${PROJECT_BINARY_DIR}/CPackConfig.cmake"
  DEPENDS Utility
  WORKING_DIRECTORY "${PROJECT_BINARY_DIR}"
  USES_TERMINAL VERBATIM)
