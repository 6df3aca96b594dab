# Run by CPack on the staging areas, before they become packages: what Debian wants otherwise than
# an installation elsewhere.

cmake_policy(VERSION 3.22)

find_program(STRIP strip REQUIRED)
find_program(GZIP gzip REQUIRED)

function(mv_run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# The system's folders are searched anyhow; a path in the file would come before them. A library is
# no program.
function(mv_as_system_file root)
  file(GLOB programs LIST_DIRECTORIES FALSE ${root}/usr/bin/*)
  file(GLOB libraries LIST_DIRECTORIES FALSE ${root}/${CPACK_MV_LIBDIR}/lib*.so*)
  foreach(file ${programs} ${libraries})
    if(NOT IS_SYMLINK ${file})
      file(RPATH_REMOVE FILE ${file})
      if(file IN_LIST libraries)
        file(CHMOD ${file} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
      endif()
    endif()
  endforeach()
endfunction()

# The default proxy library stands aside, so that the name belongs to the alternatives system.
function(mv_proxy_aside root)
  set(name libMvServerBindingv16064.so)
  file(MAKE_DIRECTORY ${root}/${CPACK_MV_PROXY_FOLDER})
  file(RENAME ${root}/${CPACK_MV_LIBDIR}/${name} ${root}/${CPACK_MV_PROXY_FOLDER}/${name})
endfunction()

function(mv_documents root package)
  set(folder ${root}/usr/share/doc/${package})
  file(REMOVE_RECURSE ${root}/usr/share/doc)
  file(MAKE_DIRECTORY ${folder})
  configure_file(${CPACK_MV_DEBIAN}/copyright ${folder}/copyright COPYONLY)
  string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
  file(WRITE ${folder}/changelog
    "mvservercppbinding (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium\n\n"
    "  * Release ${CPACK_PACKAGE_VERSION}.\n\n"
    " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
  mv_run(${GZIP} -9n ${folder}/changelog)
  file(GLOB pages ${root}/usr/share/man/man*/*)
  foreach(page ${pages})
    mv_run(${GZIP} -9n ${page})
  endforeach()
endfunction()

# Packages and the administrator of a machine have folders of their own for zsh.
function(mv_zsh_as_vendor root)
  if(EXISTS ${root}/usr/share/zsh/site-functions)
    file(RENAME ${root}/usr/share/zsh/site-functions ${root}/usr/share/zsh/vendor-completions)
  endif()
endfunction()

foreach(component ${CPACK_COMPONENTS_ALL})
  set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component})
  mv_as_system_file(${root})
  mv_zsh_as_vendor(${root})
  if(component STREQUAL "Proxy")
    mv_proxy_aside(${root})
  endif()
  file(GLOB archives ${root}/${CPACK_MV_LIBDIR}/*.a)
  foreach(archive ${archives})
    mv_run(${STRIP} --strip-debug --enable-deterministic-archives ${archive})
  endforeach()
  mv_documents(${root} ${CPACK_MV_PACKAGE_${component}})
endforeach()
