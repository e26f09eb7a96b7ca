# Installing the suite like Linux software, and the Debian package.
#
# `cmake --install <build> --prefix /usr` lays out:
#   <prefix>/lib/quorvex/           the suite, laid out as the staged one
#                                   (apps/, common/): the tool derives its
#                                   folders from its executable's location
#   <prefix>/bin/quorvex, quorvex-cli    launchers that start the program
#                                   from its own folder (./Config/Config.json)
#   <prefix>/bin/quorvex-simulator  a link to the simulator
#   <prefix>/share/applications, metainfo, icons/hicolor, man/man1
#   <prefix>/lib/systemd/user/quorvex-store.service
#   <prefix>/share/doc/quorvex/copyright, changelog.gz
# `cpack` in the build folder (scripts/package) makes quorvex_<version>_<arch>.deb.

# The install rules live beside what they install: the suite's programs and
# libraries in QuorvexHelpers.cmake, the rest in resources/.

set(QUORVEX_APP_ID "org.quorvex.Quorvex")
set(QUORVEX_HOMEPAGE "https://quorvex.org" CACHE STRING
  "The project's home page, named by the package and the desktop metadata")
set(QUORVEX_PACKAGE_CONTACT "Quorvex maintainers <maintainers@quorvex.org>" CACHE STRING
  "Maintainer of the Debian package")
set(CPACK_PACKAGE_NAME "quorvex")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_CONTACT "${QUORVEX_PACKAGE_CONTACT}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "collect GigE Vision code readers into virtual cameras")
set(CPACK_PACKAGE_DESCRIPTION
  "Quorvex lists the GigE Vision code readers on the network, collects from each
ticked device what a simulated copy needs (images with their decoded codes,
the GenICam feature description, register dumps and the whole feature tree)
and turns a collected device into a virtual camera in a per-user store.
.
The package holds the desktop tool, its command-line front end quorvex-cli,
the GigE Vision device simulator quorvex-simulator (demo code readers and the
store's virtual cameras on loopback addresses), and a systemd user unit that
keeps the store's cameras served.")
# The package's architecture, as Debian names it (amd64, arm64, ...).
execute_process(COMMAND dpkg --print-architecture OUTPUT_VARIABLE QUORVEX_DEB_ARCH
  OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
if(NOT QUORVEX_DEB_ARCH)
  set(QUORVEX_DEB_ARCH "${CMAKE_SYSTEM_PROCESSOR}")
endif()
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE "${QUORVEX_DEB_ARCH}")
set(CPACK_GENERATOR "DEB")
set(CPACK_PACKAGING_INSTALL_PREFIX "/usr")
set(CPACK_STRIP_FILES ON)
# quorvex_<version>_<arch>.deb
set(CPACK_DEBIAN_FILE_NAME "DEB-DEFAULT")
set(CPACK_OUTPUT_FILE_PREFIX "${CMAKE_BINARY_DIR}/package")
set(CPACK_DEBIAN_PACKAGE_SECTION "science")
set(CPACK_DEBIAN_PACKAGE_PRIORITY "optional")
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "${QUORVEX_HOMEPAGE}")
# Libraries from the binaries (dpkg-shlibdeps); the suite's own libraries are
# found beside the programs through their RPATH.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Loaded as a Qt plugin, so no binary names it: the widget theme's title-bar,
# check-box and message icons are SVG.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt5svg5")
# Chinese text needs a CJK font; the help button opens the manual through
# xdg-open; the simulator's network tests and the service need nothing more.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-wqy-microhei, xdg-utils")
set(CPACK_DEBIAN_COMPRESSION_TYPE "xz")
include(CPack)
