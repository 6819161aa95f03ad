# `cpack` makes a Debian package of whatever `cmake --install` lays out (scripts/dev package uses
# the release build installed to /usr). Libraries the binaries link come from the shared-library
# scan; the rest are what it cannot see: Qt's SVG icon plugin, which the icons need, pkexec for the
# administrator runs, and systemd for vantle-power's timers.
if(NOT CMAKE_SYSTEM_NAME STREQUAL "Linux")
  return()
endif()

set(VANTLE_DEBIAN_DIR "${PROJECT_SOURCE_DIR}/packaging/linux/debian")
configure_file("${VANTLE_DEBIAN_DIR}/prerm.in" "${PROJECT_BINARY_DIR}/packaging/debian/prerm"
               @ONLY FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ
               GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
# Compressed the way Debian tools expect: no name or time stamp, so rebuilds are identical.
set(VANTLE_DEBIAN_CHANGELOG "${PROJECT_BINARY_DIR}/packaging/debian/changelog.Debian.gz")
execute_process(COMMAND gzip -9nc "${VANTLE_DEBIAN_DIR}/changelog"
                OUTPUT_FILE "${VANTLE_DEBIAN_CHANGELOG}" COMMAND_ERROR_IS_FATAL ANY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${VANTLE_DEBIAN_DIR}/changelog")
install(FILES "${VANTLE_DEBIAN_DIR}/copyright" "${VANTLE_DEBIAN_CHANGELOG}"
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/vantle)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vantle)
set(CPACK_PACKAGE_VENDOR Pelmark)
set(CPACK_PACKAGE_CONTACT "Pelmark <vantle@pelmark.com>")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_STRIP_FILES TRUE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://pelmark.com/vantle/")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "Vantle sits in the system tray and looks after the applications you leave
running: it quits the ticked ones together, hides or quits an application
after its own inactivity, quits everything once the computer sits idle, runs
weekly sleep, wake, shut down, restart and power-on schedules, and offers
system-wide shortcuts for them, warning before any of it.")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6svg6, pkexec, systemd, hicolor-icon-theme")
# visudo checks the Always Allow rule before it is installed.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "sudo")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
    "${PROJECT_BINARY_DIR}/packaging/debian/prerm" "${VANTLE_DEBIAN_DIR}/postrm")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION TRUE)
include(CPack)
