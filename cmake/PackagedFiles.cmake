# Read by cpack when the files of the packages are in their folders.
set(folder "${CPACK_TEMPORARY_INSTALL_DIRECTORY}")

if(CPACK_GENERATOR STREQUAL "ZIP")
  # The runtime files come with 20 MB of debugging information. Their makers want it said who they are.
  file(GLOB runtime "${folder}/bin/lib*.dll")
  execute_process(COMMAND "${CPACK_UTILITY_STRIP}" ${runtime} COMMAND_ERROR_IS_FATAL ANY)
  foreach(package gcc-mingw-w64-x86-64-posix-runtime mingw-w64-x86-64-dev libz-mingw-w64)
    file(COPY "/usr/share/doc/${package}/copyright" DESTINATION "${folder}/share/doc/Utility/${package}")
  endforeach()
else()
  # Debian has its own names for the licence and for what is new, and wants both with either package.
  set(version "${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")
  set(documents "${folder}/Utility_Development/usr/share/doc/libutility-dev")
  file(RENAME "${folder}/Utility_Development/usr/share/doc/Utility" "${documents}")
  file(RENAME "${documents}/LICENSE" "${documents}/copyright")
  file(RENAME "${documents}/CHANGELOG.md" "${documents}/changelog")
  string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
  file(
    WRITE "${documents}/changelog.Debian"
    "utility (${version}) stable; urgency=medium\n\n  * Release ${CPACK_PACKAGE_VERSION}: changelog.gz says what is new.\n\n"
    " -- ${CPACK_PACKAGE_CONTACT}  ${now}\n")
  file(CHMOD "${documents}/changelog.Debian" FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  execute_process(COMMAND gzip -9n changelog changelog.Debian WORKING_DIRECTORY "${documents}" COMMAND_ERROR_IS_FATAL ANY)
  file(COPY "${documents}/copyright" "${documents}/changelog.gz" "${documents}/changelog.Debian.gz"
       DESTINATION "${folder}/Utility_Runtime/usr/share/doc/libutility")

  # What the library depends on. CPack would find that by itself, but has the package's scripts call ldconfig then, which
  # Debian does by a trigger.
  set(libraries "${folder}/Utility_Runtime/usr/lib")
  file(GLOB programs "${libraries}/*/libUtility.so.*.*.*" "${libraries}/*/UtilityCrashReport" "${libraries}/*/UtilityJobSupervisor")
  file(WRITE "${CPACK_TOPLEVEL_DIRECTORY}/debian/control" "")
  execute_process(
    COMMAND dpkg-shlibdeps -O ${programs}
    WORKING_DIRECTORY "${CPACK_TOPLEVEL_DIRECTORY}"
    OUTPUT_VARIABLE dependencies OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX REPLACE "^shlibs:Depends=" ", " dependencies "${dependencies}")
  string(APPEND CPACK_DEBIAN_UTILITY_RUNTIME_PACKAGE_DEPENDS "${dependencies}")

  # Each package has a summary of its own.
  set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
endif()

# Whatever the umask is.
execute_process(COMMAND find "${folder}" -type d -exec chmod 755 {} + COMMAND_ERROR_IS_FATAL ANY)
