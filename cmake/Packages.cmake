# What CPack makes of the installed files: for Linux a Debian package for each program, for Windows one zip file.
# ./package calls it.

set(VANTREL_PEOPLE "Vantrel developers")
set(CPACK_PACKAGE_NAME vantrel)
set(CPACK_PACKAGE_VENDOR ${VANTREL_PEOPLE})
# The project has no mail address. Debian's form wants one, so it is one that cannot exist.
set(CPACK_PACKAGE_CONTACT "${VANTREL_PEOPLE} <developers@vantrel.invalid>")
set(CPACK_STRIP_FILES ON)

if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_MONOLITHIC_INSTALL ON)
  set(CPACK_PACKAGE_FILE_NAME vantrel-${PROJECT_VERSION}-windows-x64)
  if(VANTREL_WINDOW)
    set(CPACK_PACKAGE_FILE_NAME vantrel-gui-${PROJECT_VERSION}-windows-x64)
  endif()
else()
  set(CPACK_GENERATOR DEB)
  set(CPACK_DEB_COMPONENT_INSTALL ON)
  set(CPACK_COMPONENTS_ALL program)
  if(VANTREL_WINDOW)
    list(APPEND CPACK_COMPONENTS_ALL window)
  endif()
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
  set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

  set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME vantrel)
  set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION utils)
  # The program loads libcurl when it sends mail, and does everything else without it. Newer systems have another name for it.
  set(CPACK_DEBIAN_PROGRAM_PACKAGE_RECOMMENDS "libcurl4 | libcurl4t64 | libcurl3-gnutls")
  # Not recommended: servers have no use for a window.
  set(CPACK_DEBIAN_PROGRAM_PACKAGE_SUGGESTS vantrel-gui)
  set(CPACK_COMPONENT_PROGRAM_DESCRIPTION "report where the space on a disk went
Vantrel scans folders and whole drives and reports what takes the space: for
every folder its size, its share and its files, and over all of it the largest
files, the kinds of files, their owners and their ages.
.
It compares with an earlier scan to show what grew, keeps a history of scans,
searches for files by many conditions, finds duplicate files and folders, and
writes text, CSV, XML and pictures. It runs on a terminal and from scripts.")

  set(CPACK_DEBIAN_WINDOW_PACKAGE_NAME vantrel-gui)
  set(CPACK_DEBIAN_WINDOW_PACKAGE_SECTION utils)
  # For its manual page and documents, and for scripts. Of the same version, since it hands its command line to this one.
  set(CPACK_DEBIAN_WINDOW_PACKAGE_RECOMMENDS "vantrel (= ${PROJECT_VERSION})")
  set(CPACK_COMPONENT_WINDOW_DESCRIPTION "show where the space on a disk went, in a window
Vantrel scans folders and whole drives and shows what takes the space: as a
tree with the largest folders first, as a treemap, as charts, and as lists of
the largest files, the kinds of files, their owners and their ages.
.
The tree grows while the scan runs. Earlier scans can be opened and compared
with, files can be searched for, and everything that is shown can be saved as
text, CSV, XML or pictures.")
endif()
include(CPack)
