# An overlay port; not run here. MV_SOURCE in the environment names the unpacked tree:
#
#   MV_SOURCE=$PWD vcpkg install mvservercppbinding --overlay-ports=packaging/vcpkg

set(SOURCE_PATH $ENV{MV_SOURCE})
if(NOT EXISTS ${SOURCE_PATH}/VERSION)
  message(FATAL_ERROR "set MV_SOURCE to the folder of the sources")
endif()

vcpkg_check_features(OUT_FEATURE_OPTIONS features FEATURES
  proxy MV_BUILD_PROXY
  testkit MV_BUILD_TESTKIT)
vcpkg_cmake_configure(SOURCE_PATH ${SOURCE_PATH} OPTIONS ${features}
  -DMV_BUILD_HUB=OFF -DMV_BUILD_TOOLS=OFF -DMV_BUILD_TESTS=OFF -DMV_BUILD_EXAMPLES=OFF)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME MvServerCppBinding CONFIG_PATH lib/cmake/MvServerCppBinding)
vcpkg_fixup_pkgconfig()
file(REMOVE_RECURSE ${CURRENT_PACKAGES_DIR}/debug/include ${CURRENT_PACKAGES_DIR}/debug/share)
vcpkg_install_copyright(FILE_LIST ${SOURCE_PATH}/LICENSE)
