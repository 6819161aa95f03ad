# Where `cmake --install` puts things: the app in bin/, its root tool in libexec/vantle/ (the path
# the Always Allow rule and the polkit action name), the desktop files under share/.
include(GNUInstallDirs)
set(VANTLE_LIBEXEC_DIR "${CMAKE_INSTALL_LIBEXECDIR}/vantle")
# How the installed app finds the tool from its own folder, whatever the prefix.
file(RELATIVE_PATH VANTLE_POWER_RELATIVE_DIR "${CMAKE_INSTALL_FULL_BINDIR}"
     "${CMAKE_INSTALL_FULL_LIBEXECDIR}/vantle")
