# Files that are installed as they are: manual pages, completions, an example, the licence.

# mv_install_data(<file> <folder> <component> [<new name>]): a file that the tree may lack.
function(mv_install_data file folder component)
  set(rename "")
  if(ARGC GREATER 3)
    set(rename RENAME ${ARGV3})
  endif()
  if(EXISTS ${PROJECT_SOURCE_DIR}/${file})
    install(FILES ${PROJECT_SOURCE_DIR}/${file} DESTINATION ${folder} COMPONENT ${component}
      ${rename})
  endif()
endfunction()

if(TARGET mvserver)
  set(completions tools/mvserver/completions)
  mv_install_data(tools/mvserver/mvserver.1 ${CMAKE_INSTALL_MANDIR}/man1 Tools)
  mv_install_data(${completions}/mvserver.bash
    ${CMAKE_INSTALL_DATADIR}/bash-completion/completions Tools mvserver)
  mv_install_data(${completions}/_mvserver
    ${CMAKE_INSTALL_DATADIR}/zsh/site-functions Tools)
  mv_install_data(${completions}/mvserver.fish
    ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d Tools)
endif()
if(TARGET mvhub)
  mv_install_data(hub/mvhub.1 ${CMAKE_INSTALL_MANDIR}/man1 Tools)
  mv_install_data(hub/example-environments.txt ${CMAKE_INSTALL_DATADIR}/mvhub Tools)
endif()
mv_install_data(LICENSE ${CMAKE_INSTALL_DOCDIR} Development)
mv_install_data(CHANGELOG.md ${CMAKE_INSTALL_DOCDIR} Development)
