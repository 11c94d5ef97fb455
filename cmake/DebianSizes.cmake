# Read by cpack when the packages are made. CPack counts as installed what a link leads to as well, the library twice
# that is: here it is counted as Debian's own tools do, in KiB that each file begins, and one for each folder.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(folder "${CPACK_TOPLEVEL_DIRECTORY}/counted")
  file(REMOVE_RECURSE "${folder}")
  execute_process(COMMAND dpkg-deb --raw-extract "${package}" "${folder}" COMMAND_ERROR_IS_FATAL ANY)
  execute_process(
    COMMAND find "${folder}" -path "${folder}/DEBIAN" -prune -o -printf "%y %s\n"
    COMMAND awk "{ total += $1 ~ /[fl]/ ? int(($2 + 1023) / 1024) : 1 } END { print total }"
    OUTPUT_VARIABLE size OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND sed -i "s/^Installed-Size: .*/Installed-Size: ${size}/" "${folder}/DEBIAN/control"
                  COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND dpkg-deb --root-owner-group -Zxz --build "${folder}" "${package}" OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()
