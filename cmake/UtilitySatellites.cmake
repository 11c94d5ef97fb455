# The library's strings in the languages of its table: for each a resource-only module beside the library, the same
# files on every system. Makes the target UtilitySatellites, with their paths as its property UTILITY_FILES.
include(UtilityResourceLibrary)

# Made once for all configurations, and copied to where the library of each is.
set(folder "${CMAKE_CURRENT_BINARY_DIR}/satellites")
file(MAKE_DIRECTORY "${folder}")

# The language's three letters, the locale identifier, a file of resources/languages. English is what the library itself
# has.
set(satellites
    "ENG 0809"
    "CHS 0804 ChineseSimplified"
    "CHT 0404 ChineseTraditional"
    "DEU 0407 German"
    "ESN 0C0A Spanish"
    "FRA 040C French"
    "ITA 0410 Italian"
    "JPN 0411 Japanese"
    "KOR 0412 Korean"
    "PTB 0416 BrazilianPortuguese"
    "TRK 041F Turkish")

set(files "")
foreach(satellite IN LISTS satellites)
  string(REPLACE " " ";" satellite "${satellite}")
  list(POP_FRONT satellite abbreviation language translation)
  set(file "${folder}/UtilityRes${abbreviation}.dll")
  set(definitions UTILITY_ABBREVIATION=${abbreviation} UTILITY_LANGUAGE=${language})
  set(sources Release.h Strings.inc)
  if(translation)
    list(APPEND definitions UTILITY_TRANSLATION=${translation})
    list(APPEND sources languages/${translation}.inc)
  endif()
  list(TRANSFORM sources PREPEND "${PROJECT_SOURCE_DIR}/resources/")
  utility_resource_library("${file}" "${PROJECT_SOURCE_DIR}/resources/Satellite.rc" ${definitions} DEPENDS ${sources})
  list(APPEND files "${file}")
endforeach()

set(copied "${folder}/copied-$<CONFIG>")
add_custom_command(
  OUTPUT "${copied}"
  COMMAND ${CMAKE_COMMAND} -E make_directory $<TARGET_FILE_DIR:Utility>
  COMMAND ${CMAKE_COMMAND} -E copy ${files} $<TARGET_FILE_DIR:Utility>
  COMMAND ${CMAKE_COMMAND} -E touch "${copied}"
  DEPENDS ${files}
  VERBATIM)
add_custom_target(UtilitySatellites ALL DEPENDS "${copied}")
set_target_properties(UtilitySatellites PROPERTIES UTILITY_FILES "${files}")
add_dependencies(Utility UtilitySatellites)
