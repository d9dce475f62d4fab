# The Debian package. What it holds is said by the install() rules; its version is the project's.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME valdorn)
set(CPACK_PACKAGE_VENDOR "The Valdorn authors")
set(CPACK_PACKAGE_CONTACT "The Valdorn authors <maintainers@valdorn.example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "keep Gitea CI runners alive")
set(CPACK_PACKAGE_DESCRIPTION
"Valdorn supervises the Gitea CI runners (act_runner) on a computer. It starts
one daemon per runner, shows the state of all of them as a bird in the status
bar, starts again what dies, and keeps a log of what matters. Runners are
made, registered and looked at in its windows.
.
It does not contain act_runner, which comes from the Gitea project.")

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# What the linker does not see: the actions of the desktop entry are sent by gapplication.
set(CPACK_DEBIAN_PACKAGE_DEPENDS libglib2.0-bin)
# Without these it runs, and lacks in this order: the actions and a second start that brings up the
# first; windows of its own on Wayland; a program to open the log with; the check for a release.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
  "default-dbus-session-bus | dbus-session-bus, qt6-wayland, xdg-utils, ca-certificates")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "gnome-shell-extension-appindicator")

# The same sources give the same package, whoever builds it.
set(CPACK_STRIP_FILES ON)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/RepackPackage.cmake)
include(CPack)
