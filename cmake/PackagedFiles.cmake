# Read by cpack when the files of the packages are in their folders.

# Whatever the umask is.
execute_process(COMMAND find "${CPACK_TEMPORARY_INSTALL_DIRECTORY}" -type d -exec chmod 755 {} + COMMAND_ERROR_IS_FATAL ANY)

if(CPACK_GENERATOR STREQUAL "ZIP")
  # The runtime files come with 20 MB of debugging information.
  file(GLOB runtime "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/bin/lib*.dll")
  execute_process(COMMAND "${CPACK_UTILITY_STRIP}" --preserve-dates ${runtime} COMMAND_ERROR_IS_FATAL ANY)
  return()
endif()

# What the library depends on. CPack would find that by itself, but has the package's scripts call ldconfig then, which
# Debian does by a trigger.
set(folder "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/Utility_Runtime")
file(GLOB programs "${folder}/usr/lib/*/libUtility.so.*.*.*" "${folder}/usr/lib/*/Utility[CJ]*[a-z]")
file(WRITE "${CPACK_TOPLEVEL_DIRECTORY}/debian/control" "")
execute_process(
  COMMAND dpkg-shlibdeps -O ${programs}
  WORKING_DIRECTORY "${CPACK_TOPLEVEL_DIRECTORY}"
  OUTPUT_VARIABLE dependencies OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "^shlibs:Depends=" ", " dependencies "${dependencies}")
string(APPEND CPACK_DEBIAN_UTILITY_RUNTIME_PACKAGE_DEPENDS "${dependencies}")

# Each package has a summary of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
