# The Debian package: `cpack -G DEB` in a build tree (scripts/package does it
# all) makes quilo_VERSION_ARCH.deb of what cmake --install installs. Its
# Depends come from what the programs link (dpkg-shlibdeps), plus the Qt
# plugins that are loaded rather than linked: the X11 and Wayland platforms
# and the TIFF reader of the tray's image.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quilo)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The Quilo developers <developers@quilo.example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "give pictures icons that show what is in them")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "Quilo renders thumbnails of pictures at 128, 32 and 16 pixels, packs them
into a Mac icon family (the .icns format) and attaches it to each picture as
its custom icon, in an AppleDouble sidecar beside the file, so that a Mac
reaching the folder shows the picture itself. It also writes .icns files.

It runs in the desktop's tray with global hot keys and file-manager menu
entries, and has a command line for scripts.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE ${QUILO_HOMEPAGE})
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins, qt6-image-formats-plugins")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
include(CPack)
