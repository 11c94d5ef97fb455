# A value's way through the program, and a whole tree's: cmake -D PROGRAM=... -D "OPTIONS=..." -D SAMPLE=... -D
# FOLDER=... -P Settings.cmake
#   EMULATOR  runs the program, if it is of another system
#   OPTIONS   for each run, where the hives are
#   SAMPLE    a registry file with all under one key
#   FOLDER    for what is written
set(key "HKCU\\SOFTWARE\\Selvane\\Sample")

function(settings status output)
  execute_process(
    COMMAND ${EMULATOR} "${PROGRAM}" ${OPTIONS} ${ARGN}
    RESULT_VARIABLE actual
    OUTPUT_VARIABLE printed
    ERROR_VARIABLE errors)
  string(REPLACE "\r" "" printed "${printed}")
  if(NOT actual STREQUAL status OR NOT printed STREQUAL output)
    message(FATAL_ERROR "${ARGN}\nends with ${actual}, not ${status}, and prints\n${printed}\nnot\n${output}\n${errors}")
  endif()
endfunction()

file(REMOVE "${FOLDER}/exported.reg" "${FOLDER}/broken.reg" "${FOLDER}/gone.reg")
settings(0 "" import "${SAMPLE}")
settings(0 "" export "${key}" "${FOLDER}/exported.reg")
file(SHA256 "${SAMPLE}" expected)
file(SHA256 "${FOLDER}/exported.reg" exported)
if(NOT exported STREQUAL expected)
  message(FATAL_ERROR "${FOLDER}/exported.reg is not what was imported from ${SAMPLE}")
endif()

settings(0 "prüfstück 鉄 😀\n" get "${key}\\Options" Name)
settings(0 "9a9999999999b93f (0.1)\n" get "${key}\\Options" Double)
settings(0 "" set "${key}\\Options" Größe REG_DWORD 0x10)
settings(0 "16\n" get "${key}\\options" größe)
settings(0 "" set "${key}\\New" List REG_MULTI_SZ one two)
settings(0 "\"List\"=hex(7):6f,00,6e,00,65,00,00,00,74,00,77,00,6f,00,00,00,00,00\n" list "${key}\\New")
settings(0 "" set "${key}\\Newer" Size REG_BINARY 000000000000f83f)
settings(0 "\"Size\"=hex:00,00,00,00,00,00,f8,3f ; (1.5)\n" list "${key}\\Newer")
settings(0 "" delete "${key}\\Options" Größe)
settings(1 "" get "${key}\\Options" Größe)
settings(1 "" delete "${key}\\Options" Größe)

file(WRITE "${FOLDER}/broken.reg" "REGEDIT4\n[${key}]\n\"Half\"=dword:1\n\"Other\"=dword:x\n")
settings(1 "" import "${FOLDER}/broken.reg")
file(WRITE "${FOLDER}/broken.reg" "REGEDIT4\n[HKEY_CURRENT_USER\\SOFTWARE\\Selvane\\Sample]\n\"Half\"=dword:1\n[-HKEY_CURRENT_USER]\n")
settings(1 "" import "${FOLDER}/broken.reg")
settings(1 "" get "${key}" Half)

file(WRITE "${FOLDER}/gone.reg" "Windows Registry Editor Version 5.00\n\n[-HKEY_CURRENT_USER\\SOFTWARE\\Selvane\\Sample]\n")
settings(0 "" import "${FOLDER}/gone.reg")
settings(1 "" list "${key}")
settings(1 "" delete "${key}")
settings(2 "" delete HKCU)
settings(2 "" delete HKEY_USERS\\x)
settings(2 "" set "${key}" Name REG_DWORD x)
settings(2 "" export "${key}")
settings(1 "" import "${FOLDER}/absent.reg")
