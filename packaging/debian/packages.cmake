set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR Varnok)
set(CPACK_PACKAGE_CONTACT "Varnok <packages@varnok.io>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL varnokctl varnok-desktop)
if(TARGET varnok)
  list(APPEND CPACK_COMPONENTS_ALL varnok)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS OFF)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)

# libcurl is opened when it is first called, so no program names it.
set(CPACK_DEBIAN_VARNOKCTL_PACKAGE_NAME varnokctl)
set(CPACK_DEBIAN_VARNOKCTL_PACKAGE_DEPENDS "libcurl4, tzdata")
set(CPACK_DEBIAN_VARNOKCTL_PACKAGE_RECOMMENDS "default-mta | mail-transport-agent")
set(CPACK_DEBIAN_VARNOKCTL_PACKAGE_SUGGESTS "varnok, varnok-desktop")
set(CPACK_COMPONENT_VARNOKCTL_DESCRIPTION "contact backup on the command line and in the browser
Reads every person of an address book and writes one backup: vCard in one
file, one card per file in a zip archive, or a CSV table. Shows the address
book to browsers on the local network, finds duplicates, sends backups by
e-mail and to Dropbox. Needs no desktop.")

set(CPACK_DEBIAN_VARNOK-DESKTOP_PACKAGE_NAME varnok-desktop)
set(CPACK_DEBIAN_VARNOK-DESKTOP_PACKAGE_DEPENDS "varnokctl (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_VARNOK-DESKTOP_PACKAGE_RECOMMENDS "evolution-data-server, xdg-desktop-portal, xdg-utils")
set(CPACK_COMPONENT_VARNOK-DESKTOP_DESCRIPTION "contact backup: the desktop's address book and services
Modules with which Varnok reads the address book of Evolution Data Server,
keeps its tokens in the keyring, and uses the portals, notifications and
idle inhibition of the desktop. Loaded only when they are needed.")

set(CPACK_DEBIAN_VARNOK_PACKAGE_NAME varnok)
string(JOIN ", " CPACK_DEBIAN_VARNOK_PACKAGE_DEPENDS
  "varnokctl (= ${PROJECT_VERSION})" "varnok-desktop (= ${PROJECT_VERSION})"
  qml6-module-qt-labs-folderlistmodel qml6-module-qtqml-workerscript qml6-module-qtquick qml6-module-qtquick-controls qml6-module-qtquick-dialogs qml6-module-qtquick-layouts
  qml6-module-qtquick-templates qml6-module-qtquick-window)
set(CPACK_DEBIAN_VARNOK_PACKAGE_RECOMMENDS "qt6-wayland, fonts-noto-core, fonts-noto-color-emoji")
set(CPACK_COMPONENT_VARNOK_DESCRIPTION "contact backup for phone, tablet and desktop
Writes every person of the address book into one file that you own, with
one tap: vCard or CSV, with the fields you chose. Sends it by e-mail, to
Dropbox or to a browser on the same network, keeps the earlier backups,
removes duplicates and reminds you of the next backup.")

include(CPack)
