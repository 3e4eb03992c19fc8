# make package: build/ondrel_<version>_<arch>.deb, everything under /usr. The dependencies are
# those dpkg-shlibdeps finds in the binaries, plus the Qt plug-ins the program loads at run time,
# which no binary links and so no tool can find: the platform plug-ins (a window at all), the
# SVG engine (the icons) and the SQLite driver (the help's index and search).
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ondrel)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "The File Ondrel developers")
set(CPACK_PACKAGE_CONTACT "${ONDREL_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins, libqt6svg6, libqt6sql6-sqlite")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "Customizable file copying utility
File Ondrel copies, or moves, files by jobs described once in spec files:
which source directories to take files from, which files (by masks such as
*.htm;*.html) and which destination directories each group of files goes to.
Staging a job copies every matching file to every destination, keeping each
file's place below its source directory, with rules for overwriting existing
files, missing directories, file attributes, errors and a staging log.
.
The package holds the windowed program, ondrel, and the headless stager,
ondrel-stage, which stages the same jobs from a terminal or a script.")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
include(CPack)
