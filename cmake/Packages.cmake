# Debian packages: `cpack -G DEB`, one for each component of Install.cmake. Configured with the
# prefix /usr, libraries go to the architecture's own folder; scripts/package does all of it.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME mvservercppbinding)
set(CPACK_PACKAGE_VENDOR "MvServerCppBinding")
set(CPACK_PACKAGE_CONTACT "MvServerCppBinding maintainers <maintainers@mvservercppbinding.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_COMPONENTS_ALL Library Development)

set(MV_DEBIAN ${PROJECT_SOURCE_DIR}/packaging/debian)
set(MV_DEBIAN_BUILD ${PROJECT_BINARY_DIR}/package/debian)
set(MV_DEBIAN_LIBDIR usr/${CMAKE_INSTALL_LIBDIR})
set(MV_DEBIAN_PROXY_FOLDER ${MV_DEBIAN_LIBDIR}/mvserverbinding/default)
set(runtime libmvservercppbinding${PROJECT_VERSION_MAJOR})

# Staging areas are finished by a script; the variables tell it what it cannot know.
set(CPACK_PRE_BUILD_SCRIPTS ${MV_DEBIAN}/FinishStaging.cmake)
set(CPACK_MV_DEBIAN ${MV_DEBIAN})
set(CPACK_MV_LIBDIR ${MV_DEBIAN_LIBDIR})
set(CPACK_MV_PROXY_FOLDER ${MV_DEBIAN_PROXY_FOLDER})

# mv_deb(<component> <package> <section> <depends> <synopsis> <description>)
macro(mv_deb component package section depends synopsis description)
  string(TOUPPER ${component} _upper)
  set(CPACK_DEBIAN_${_upper}_PACKAGE_NAME ${package})
  set(CPACK_DEBIAN_${_upper}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${_upper}_PACKAGE_DEPENDS "${depends}")
  set(CPACK_DEBIAN_${_upper}_DESCRIPTION "${synopsis}\n${description}")
  set(CPACK_MV_PACKAGE_${component} ${package})
endmacro()

# mv_deb_control(<component> <template>...): control files made from packaging/debian/*.in.
macro(mv_deb_control component)
  string(TOUPPER ${component} _upper)
  foreach(_file ${ARGN})
    string(REGEX REPLACE "^[a-z]+\\." "" _name ${_file})
    configure_file(${MV_DEBIAN}/${_file}.in ${MV_DEBIAN_BUILD}/${component}/${_name} @ONLY)
    list(APPEND CPACK_DEBIAN_${_upper}_PACKAGE_CONTROL_EXTRA ${MV_DEBIAN_BUILD}/${component}/${_name})
  endforeach()
endmacro()

mv_deb(Library ${runtime} libs "libmvserverbindingv16064-default | libmvserverbindingv16064"
  "client library for exchanges with an application server"
  "It sends requests to an application server through a local server-proxy
library and reads the answers as streams or strings.")
mv_deb_control(Library library.shlibs library.triggers)

mv_deb(Development libmvservercppbinding-dev libdevel
  "${runtime} (= ${PROJECT_VERSION}), libmvserverbindingv16064-default | libmvserverbindingv16064, libicu-dev, zlib1g-dev"
  "client library for exchanges with an application server (development)"
  "Headers, static library, CMake package and pkg-config files.")

if(TARGET MvServerBinding)
  list(APPEND CPACK_COMPONENTS_ALL Proxy)
  mv_deb(Proxy libmvserverbindingv16064-default libs ""
    "default server-proxy library over HTTP"
    "The eight functions of a server-proxy library over HTTP and HTTPS. A
library of the same name from elsewhere can take its place through the
alternatives system.")
  set(CPACK_DEBIAN_PROXY_PACKAGE_PROVIDES libmvserverbindingv16064)
  mv_deb_control(Proxy proxy.postinst proxy.prerm)
endif()

if(TARGET MvServerTestKit)
  list(APPEND CPACK_COMPONENTS_ALL TestKit)
  mv_deb(TestKit libmvservercppbinding-testkit-dev libdevel
    "libmvservercppbinding-dev (= ${PROJECT_VERSION})"
    "test kit for applications of the client library"
    "A server proxy that answers from a script, for tests of applications
without a server.")
endif()

if(tools)
  list(APPEND CPACK_COMPONENTS_ALL Tools)
  mv_deb(Tools mvserver-tools net "${runtime} (= ${PROJECT_VERSION})"
    "command line and development hub for application server exchanges"
    "The program mvserver sends requests, lists environments, signs files and
finds out why something fails; mvhub is a local service to develop and
test against.")
endif()

# Where dpkg-shlibdeps finds the libraries that no installed package has.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${PROJECT_BINARY_DIR}/cmake/library ${PROJECT_BINARY_DIR}/proxy)

include(CPack)
