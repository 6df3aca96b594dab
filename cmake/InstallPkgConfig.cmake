# The pkg-config files. They find the prefix by their own place, unless a folder is absolute.

set(MV_PKGCONFIG_FOLDER ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

function(mv_pc_place place result)
  cmake_path(IS_ABSOLUTE place absolute)
  if(NOT absolute)
    string(PREPEND place "\${prefix}/")
  endif()
  set(${result} ${place} PARENT_SCOPE)
endfunction()

mv_pc_place(${CMAKE_INSTALL_LIBDIR} MV_PC_LIBDIR)
mv_pc_place(${CMAKE_INSTALL_INCLUDEDIR} MV_PC_INCLUDEDIR)
set(MV_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
cmake_path(IS_ABSOLUTE CMAKE_INSTALL_LIBDIR absolute)
if(NOT absolute)
  file(RELATIVE_PATH up /${MV_PKGCONFIG_FOLDER} /)
  string(REGEX REPLACE "/$" "" MV_PC_PREFIX "\${pcfiledir}/${up}")
endif()

set(MV_PC_PROXY "")
if(TARGET MvServerBinding)
  set(MV_PC_PROXY " -lMvServerBindingv16064")
endif()

# mv_pkg_config(<name> <component>)
function(mv_pkg_config name component)
  configure_file(${MV_TEMPLATES}/${name}.pc.in ${PROJECT_BINARY_DIR}/package/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/package/${name}.pc
    DESTINATION ${MV_PKGCONFIG_FOLDER} COMPONENT ${component})
endfunction()

mv_pkg_config(mvservercppbinding Development)
mv_pkg_config(mvservercppbinding-static Development)
if(TARGET MvServerTestKit)
  mv_pkg_config(mvservercppbinding-testkit TestKit)
endif()
