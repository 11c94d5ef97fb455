# Installs the library, its public headers, and the package for find_package and pkg-config. Included where the library
# is made.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# Its parts are counted, and the manifest has it as it is written.
cmake_path(NORMAL_PATH CMAKE_INSTALL_LIBDIR)

# CMake 3.25 puts the prefix ahead of an absolute folder of headers.
set(header_folder "${CMAKE_INSTALL_INCLUDEDIR}")
if(IS_ABSOLUTE "${header_folder}")
  file(RELATIVE_PATH header_folder "${CMAKE_INSTALL_PREFIX}" "${header_folder}")
endif()
# What a program needs to run is Utility_Runtime, the rest is for those who build one.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME Utility_Development)
install(
  TARGETS Utility
  EXPORT UtilityTargets
  RUNTIME COMPONENT Utility_Runtime
  LIBRARY COMPONENT Utility_Runtime NAMELINK_COMPONENT Utility_Development
  FILE_SET HEADERS DESTINATION "${header_folder}")
install(TARGETS CatchableFaults EXPORT UtilityTargets)

# A build folder has the package as well: -D Utility_DIR=<the folder> finds it there. Packages of one major version keep
# their promises to each other.
set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/Utility")
install(EXPORT UtilityTargets NAMESPACE Utility:: DESTINATION "${package_folder}")
set(package "${PROJECT_BINARY_DIR}")
configure_file("${PROJECT_SOURCE_DIR}/cmake/UtilityConfig.cmake.in" "${package}/UtilityConfig.cmake" @ONLY)
write_basic_package_version_file("${package}/UtilityConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
set(package_files UtilityVersionRecord.cmake VersionRecord.cpp.in VersionRecord.rc.in)
foreach(file IN LISTS package_files)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/${file}" "${package}/${file}" COPYONLY)
endforeach()
list(TRANSFORM package_files PREPEND "${package}/")
list(APPEND package_files "${package}/UtilityConfig.cmake" "${package}/UtilityConfigVersion.cmake")
install(FILES ${package_files} DESTINATION "${package_folder}")

if(NOT WIN32)
  # Beside the library, which looks for it there.
  install(
    TARGETS UtilityCrashReport UtilityJobSupervisor
    EXPORT UtilityTargets
    RUNTIME DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT Utility_Runtime)
endif()

if(UTILITY_SATELLITES)
  get_target_property(satellites UtilitySatellites UTILITY_FILES)
  set(satellite_folder "${CMAKE_INSTALL_LIBDIR}")
  if(WIN32 AND UTILITY_SHARED)
    set(satellite_folder "${CMAKE_INSTALL_BINDIR}")
  endif()
  install(FILES ${satellites} DESTINATION "${satellite_folder}" COMPONENT Utility_Runtime)
endif()

set(exported Utility CatchableFaults)
set(pc_definitions "")
set(pc_libraries "-lboost_filesystem")
if(WIN32 AND UTILITY_SHARED)
  utility_runtime_files(runtime)
  install(FILES ${runtime} DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT Utility_Runtime)
elseif(WIN32)
  # A linker takes from an archive what is referred to by name, which resources are not: they go in as an object.
  target_link_libraries(Utility INTERFACE $<BUILD_INTERFACE:$<TARGET_OBJECTS:Utility::UtilityResources>>
                                          $<INSTALL_INTERFACE:${installed_imports}/Utility.res.obj>)
  list(APPEND exported UtilityResources)
  install(FILES ${delayed_imports} DESTINATION "${CMAKE_INSTALL_LIBDIR}")
  install(FILES $<TARGET_OBJECTS:UtilityResources> DESTINATION "${CMAKE_INSTALL_LIBDIR}" RENAME Utility.res.obj)
  string(PREPEND pc_libraries "\${libdir}/Utility.res.obj ")
  string(APPEND pc_libraries " -lUtility_zlib1 -lUtility_dbghelp -lUtility_netapi32 -ldelayimp -lole32 -lshell32 -lshlwapi -luuid -lversion")
else()
  list(APPEND exported UtilityCrashReport UtilityJobSupervisor)
endif()
if(NOT UTILITY_SHARED)
  # All that an archive leaves to be linked, with --static and without it: there is no shared library that has it.
  set(pc_definitions "-DUTILITY_STATIC")
  string(APPEND pc_libraries " -pthread")
endif()
export(TARGETS ${exported} NAMESPACE Utility:: FILE "${package}/UtilityTargets.cmake")

# It finds its folders from its own place, unless that is absolute.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  string(REPLACE " " "\\ " pc_prefix "${CMAKE_INSTALL_PREFIX}")
else()
  string(REGEX REPLACE "[^/]+" ".." pc_prefix "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
  string(PREPEND pc_prefix "\${pcfiledir}/")
endif()
foreach(folder libdir includedir)
  string(TOUPPER "CMAKE_INSTALL_${folder}" installed)
  set(pc_${folder} "\${prefix}")
  cmake_path(APPEND pc_${folder} "${${installed}}")
  string(REPLACE " " "\\ " pc_${folder} "${pc_${folder}}")
endforeach()
configure_file("${PROJECT_SOURCE_DIR}/cmake/utility.pc.in" utility.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/utility.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

# For who has only the package. The reference is there once scripts/docs has made it. A host's own documents have the
# folder that is its own.
set(document_folder "${CMAKE_INSTALL_DOCDIR}")
if(NOT PROJECT_IS_TOP_LEVEL)
  set(document_folder "${CMAKE_INSTALL_DATAROOTDIR}/doc/${PROJECT_NAME}")
endif()
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" "${PROJECT_SOURCE_DIR}/README.md" "${PROJECT_SOURCE_DIR}/CHANGELOG.md"
        DESTINATION "${document_folder}")
file(GLOB pages "${PROJECT_SOURCE_DIR}/docs/*.md" "${PROJECT_SOURCE_DIR}/docs/*.png" "${PROJECT_SOURCE_DIR}/docs/*.svg")
install(FILES ${pages} DESTINATION "${document_folder}/docs")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/build/docs/html" DESTINATION "${document_folder}" OPTIONAL)
