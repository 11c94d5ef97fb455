# Installs the library, its public headers, and the package for find_package and pkg-config. Included where the library
# is made.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# What a program needs to run is Utility_Runtime, the rest is for those who build one.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME Utility_Development)
install(
  TARGETS Utility
  EXPORT UtilityTargets
  RUNTIME COMPONENT Utility_Runtime
  LIBRARY COMPONENT Utility_Runtime NAMELINK_COMPONENT Utility_Development
  FILE_SET HEADERS)
install(TARGETS CatchableFaults EXPORT UtilityTargets)

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/Utility")
install(EXPORT UtilityTargets NAMESPACE Utility:: DESTINATION "${package_folder}")
write_basic_package_version_file(UtilityConfigVersion.cmake COMPATIBILITY SameMinorVersion)
set(package_files UtilityConfig.cmake UtilityVersionRecord.cmake VersionRecord.cpp.in VersionRecord.rc.in)
list(TRANSFORM package_files PREPEND "${PROJECT_SOURCE_DIR}/cmake/")
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/UtilityConfigVersion.cmake" ${package_files} DESTINATION "${package_folder}")

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
  if(WIN32)
    set(satellite_folder "${CMAKE_INSTALL_BINDIR}")
  endif()
  install(FILES ${satellites} DESTINATION "${satellite_folder}" COMPONENT Utility_Runtime)
endif()

set(pc_definitions "")
set(pc_libraries "-lboost_filesystem")
if(NOT UTILITY_SHARED)
  set(pc_definitions "-DUTILITY_STATIC")
  string(APPEND pc_libraries " -pthread")
  if(WIN32)
    string(APPEND pc_libraries " -lUtility_zlib1 -lUtility_dbghelp -lUtility_netapi32 -ldelayimp -lole32 -lshell32 -lshlwapi -luuid -lversion")
  else()
    string(APPEND pc_libraries " -lsqlite3")
  endif()
endif()

if(WIN32 AND UTILITY_SHARED)
  utility_runtime_files(runtime)
  install(FILES ${runtime} DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT Utility_Runtime)
elseif(WIN32)
  # A linker takes from an archive what is referred to by name, which resources are not: they go in as an object.
  set(resources "${CMAKE_INSTALL_LIBDIR}/Utility.res.obj")
  target_link_libraries(Utility INTERFACE $<BUILD_INTERFACE:$<TARGET_OBJECTS:UtilityResources>>
                                          $<INSTALL_INTERFACE:$<INSTALL_PREFIX>/${resources}>)
  install(FILES ${delayed_imports} DESTINATION "${CMAKE_INSTALL_LIBDIR}")
  install(FILES $<TARGET_OBJECTS:UtilityResources> DESTINATION "${CMAKE_INSTALL_LIBDIR}" RENAME Utility.res.obj)
  string(PREPEND pc_libraries "\${prefix}/${resources} ")
endif()

file(RELATIVE_PATH pc_prefix "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file("${PROJECT_SOURCE_DIR}/cmake/utility.pc.in" utility.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/utility.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
