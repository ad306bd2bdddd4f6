# SPDX-License-Identifier: MIT
# What `cmake --install` puts on a machine, and the Debian package CPack makes of it: in a Release tree,
# `cpack -G DEB` writes xvelario_<version>_amd64.deb (scripts/package does it all, and checks the result).
#
#   /usr/bin/xvelario                    the order form (target xVELARIO)
#   /usr/bin/xvelario-makedb             the demo generator
#   /usr/bin/xvelario-import, -backup    the shop's tools, each as soon as its target exists
#   /usr/share/applications/xvelario.desktop, the icon, the AppStream metainfo,
#   /usr/share/doc/xvelario/copyright and changelog.gz, a manual page for each command in packaging/man
#
# The libraries the programs link are found by dpkg-shlibdeps; the Qt SQL drivers are plugins the program
# loads by name at run time, which no linker sees, so they are named here.
# Included at the end of the top CMakeLists, once every target exists.

include(GNUInstallDirs)

set(XV_PACKAGING_DIR ${CMAKE_SOURCE_DIR}/packaging)
set(XV_PACKAGE_NAME xvelario)

# --- the programs ---
set(xv_installed_programs xVELARIO xvelario-makedb)
foreach(tool IN ITEMS xvelario-import xvelario-backup)
    if(TARGET ${tool})
        list(APPEND xv_installed_programs ${tool})
    endif()
endforeach()
install(TARGETS ${xv_installed_programs} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

# --- the desktop ---
install(FILES ${XV_PACKAGING_DIR}/xvelario.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${XV_PACKAGING_DIR}/xvelario.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES ${XV_PACKAGING_DIR}/it.xvelario.xvelario.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)

# --- the version, kept in three places that must agree ---
# project(VERSION) names it; the package's changelog (packaging/changelog, Debian's format) and the AppStream
# releases must have an entry for it. The changelog's newest entry also names the package's maintainer.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
    ${XV_PACKAGING_DIR}/changelog ${XV_PACKAGING_DIR}/it.xvelario.xvelario.metainfo.xml)
file(STRINGS ${XV_PACKAGING_DIR}/changelog xv_changelog_head LIMIT_COUNT 1)
if(NOT xv_changelog_head MATCHES "^${XV_PACKAGE_NAME} \\(([^)]+)\\) ")
    message(FATAL_ERROR "packaging/changelog does not start with an entry \"${XV_PACKAGE_NAME} (VERSION) ...\"")
endif()
if(NOT CMAKE_MATCH_1 STREQUAL PROJECT_VERSION)
    message(FATAL_ERROR "The version is ${PROJECT_VERSION} (project() in CMakeLists.txt), but the newest entry of "
        "packaging/changelog is ${CMAKE_MATCH_1}: add an entry for ${PROJECT_VERSION} at its top.")
endif()
file(STRINGS ${XV_PACKAGING_DIR}/changelog xv_changelog_trailer REGEX "^ -- " LIMIT_COUNT 1)
if(NOT xv_changelog_trailer MATCHES "^ -- ([^<]+ <[^>]+>)  ")
    message(FATAL_ERROR "The newest entry of packaging/changelog has no \" -- Name <address>  date\" line")
endif()
set(XV_PACKAGE_MAINTAINER "${CMAKE_MATCH_1}")
file(READ ${XV_PACKAGING_DIR}/it.xvelario.xvelario.metainfo.xml xv_metainfo)
string(REPLACE "." "\\." xv_version_pattern "${PROJECT_VERSION}")
if(NOT xv_metainfo MATCHES "<release version=\"${xv_version_pattern}\"")
    message(FATAL_ERROR "packaging/it.xvelario.xvelario.metainfo.xml has no <release version=\"${PROJECT_VERSION}\" "
        "date=\"YYYY-MM-DD\"/> among its releases")
endif()

# --- the documents Debian asks for ---
# The version carries no Debian revision, so Debian calls the package native: its changelog is changelog.gz.
# gzip -n keeps the file the same from one build to the next (no name or time inside).
set(xv_changelog_gz ${CMAKE_BINARY_DIR}/packaging/changelog.gz)
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/packaging)
execute_process(COMMAND gzip -9 -n -c ${XV_PACKAGING_DIR}/changelog
    OUTPUT_FILE ${xv_changelog_gz} RESULT_VARIABLE xv_gzip_result)
if(NOT xv_gzip_result EQUAL 0)
    message(FATAL_ERROR "gzip could not compress packaging/changelog: ${xv_gzip_result}")
endif()
install(FILES ${XV_PACKAGING_DIR}/copyright ${xv_changelog_gz}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${XV_PACKAGE_NAME})

# --- the manual pages: packaging/man/NAME.1 for each command, compressed as Debian has them ---
file(GLOB xv_man_pages CONFIGURE_DEPENDS ${XV_PACKAGING_DIR}/man/*.1)
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/packaging/man)
foreach(page IN LISTS xv_man_pages)
    get_filename_component(name ${page} NAME)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${page})
    execute_process(COMMAND gzip -9 -n -c ${page}
        OUTPUT_FILE ${CMAKE_BINARY_DIR}/packaging/man/${name}.gz RESULT_VARIABLE xv_gzip_result)
    if(NOT xv_gzip_result EQUAL 0)
        message(FATAL_ERROR "gzip could not compress packaging/man/${name}: ${xv_gzip_result}")
    endif()
    install(FILES ${CMAKE_BINARY_DIR}/packaging/man/${name}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endforeach()

# --- the Debian package ---
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${XV_PACKAGE_NAME})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "The xVELARIO authors")
set(CPACK_PACKAGE_CONTACT "${XV_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
# Folders 0755 whatever the umask of the one building.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "order taking for a ceremony favour shop")
set(CPACK_PACKAGE_DESCRIPTION
"xVELARIO is the order-taking program of a shop that sells ceremony favours:
favour boxes, sugared almonds, handkerchiefs, cases and printed cards. The
shop's staff enter, find, change, delete and print a customer's order in one
window, the order form, driven from the keyboard; it prints the statements,
the control slips and the cards list.

One workstation keeps its orders in an embedded SQLite database, filled with
a demo shop on the first start; several workstations share a PostgreSQL
database. The package also holds xvelario-import, which brings in a shop's
catalogue, customers, suppliers and agents from a spreadsheet's CSV files,
xvelario-backup, which copies the database and restores a copy, and
xvelario-makedb, which builds demo shops of any size.")

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${XV_PACKAGE_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6sql6-sqlite, libqt6sql6-psql")
# xvelario-backup runs pg_dump and pg_restore for a shop on PostgreSQL; one on SQLite needs neither.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "postgresql-client")
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

include(CPack)
