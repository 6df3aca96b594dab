# What `cmake --install` puts where. Everything is relative to the prefix, which may be moved
# afterwards: programs and libraries find each other by $ORIGIN, the CMake package and the
# pkg-config files by their own place.
#
# | component   | holds |
# |---|---|
# | Library     | the shared library                                                        |
# | Proxy       | the default proxy library                                                 |
# | Development | headers, archive, CMake package, pkg-config files                         |
# | TestKit     | headers and archive of the test kit                                       |
# | Tools       | mvserver, mvhub, man pages, completions, an example directory for the hub |
#
# A target that is not built is not installed.

include(CMakePackageConfigHelpers)

set(MV_PACKAGE_FOLDER ${CMAKE_INSTALL_LIBDIR}/cmake/MvServerCppBinding)
set(MV_TEMPLATES ${PROJECT_SOURCE_DIR}/cmake/package)

# How a program in `folder` reaches `place` at run time.
function(mv_run_path folder place result)
  cmake_path(IS_ABSOLUTE place absolute)
  if(NOT absolute)
    cmake_path(RELATIVE_PATH place BASE_DIRECTORY ${folder})
    string(PREPEND place "$ORIGIN/")
  endif()
  set(${result} ${place} PARENT_SCOPE)
endfunction()

# mv_export(<set> <component>): the file of imported targets that belongs to a component.
function(mv_export set component)
  install(EXPORT ${set} FILE ${set}.cmake NAMESPACE MvServerCppBinding::
    DESTINATION ${MV_PACKAGE_FOLDER} COMPONENT ${component})
endfunction()

# --- libraries and programs -----------------------------------------------------------------------
set_target_properties(MvServerCppBinding PROPERTIES INSTALL_RPATH "$ORIGIN")
install(TARGETS MvServerCppBinding EXPORT MvServerCppBindingTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Library
  NAMELINK_COMPONENT Development)
mv_export(MvServerCppBindingTargets Development)

install(TARGETS MvServerCppBindingStatic EXPORT MvServerCppBindingStaticTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development)
mv_export(MvServerCppBindingStaticTargets Development)

if(TARGET MvServerBinding)
  install(TARGETS MvServerBinding EXPORT MvServerBindingTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Proxy)
  mv_export(MvServerBindingTargets Development)
endif()

if(TARGET MvServerTestKit)
  install(TARGETS MvServerTestKit EXPORT MvServerCppBindingTestKitTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT TestKit)
  mv_export(MvServerCppBindingTestKitTargets TestKit)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/testing/
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/morvenn/net/mvserverproxy/testkit COMPONENT TestKit
    FILES_MATCHING PATTERN "*.h" PATTERN "hub" EXCLUDE)
endif()

mv_run_path(${CMAKE_INSTALL_BINDIR} ${CMAKE_INSTALL_LIBDIR} libraries)
foreach(program mvserver mvhub)
  if(TARGET ${program})
    set_target_properties(${program} PROPERTIES INSTALL_RPATH ${libraries})
    install(TARGETS ${program} EXPORT MvServerCppBindingToolsTargets
      RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Tools)
    set(tools ON)
  endif()
endforeach()
if(tools)
  mv_export(MvServerCppBindingToolsTargets Tools)
endif()

# --- headers and what finds them ------------------------------------------------------------------
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT Development FILES_MATCHING PATTERN "*.h")

set(MV_LIBRARY_FOLDER ${CMAKE_INSTALL_LIBDIR})
configure_package_config_file(${MV_TEMPLATES}/MvServerCppBindingConfig.cmake.in
  ${PROJECT_BINARY_DIR}/package/MvServerCppBindingConfig.cmake
  INSTALL_DESTINATION ${MV_PACKAGE_FOLDER} PATH_VARS MV_LIBRARY_FOLDER
  NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/package/MvServerCppBindingConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/package/MvServerCppBindingConfig.cmake
  ${PROJECT_BINARY_DIR}/package/MvServerCppBindingConfigVersion.cmake
  DESTINATION ${MV_PACKAGE_FOLDER} COMPONENT Development)

include(${CMAKE_CURRENT_LIST_DIR}/InstallPkgConfig.cmake)

# --- pages, completions, packages -----------------------------------------------------------------
include(${CMAKE_CURRENT_LIST_DIR}/InstallData.cmake)
if(PROJECT_IS_TOP_LEVEL)
  include(${CMAKE_CURRENT_LIST_DIR}/Packages.cmake)
endif()
