# Linux packages: `cpack -G DEB` and `cpack -G RPM` in a build directory. Everything a
# distribution checks comes from here: the project's version and release date, the licence,
# the description, the files under /usr/share/doc, the compressed man page and changelog, the
# AppStream metadata and the desktop entry.

include(GNUInstallDirs)

set(LUMORA_HOMEPAGE "https://github.com/lumora/lumora")
set(LUMORA_CONTACT "The Lumora developers <lumora@users.noreply.github.com>")
set(LUMORA_APP_ID io.github.lumora.Lumora)
set(LUMORA_SUMMARY "Control every attached display: DDC/CI, backlight, dimming, modes, lid")
# The AppStream description in short, wrapped for 80-column terminals (Debian shows it as is).
string(CONCAT LUMORA_DESCRIPTION
    "Lumora is a tray agent that gives one user direct control over every attached\n"
    "display: the hardware brightness, contrast and volume of external monitors\n"
    "over DDC/CI, the laptop's backlight, software dimming and colour where neither\n"
    "exists, modes, the main display, mirroring, switching a display off and on\n"
    "without unplugging it, the laptop lid, global shortcuts, the brightness keys\n"
    "for the monitor under the pointer, an on-screen level display, and lumora://\n"
    "commands for scripts answered with a JSON status file.")

set(_pkg ${PROJECT_SOURCE_DIR}/packaging/linux)
set(_gen ${PROJECT_BINARY_DIR}/packaging)
set(_doc ${CMAKE_INSTALL_DATADIR}/doc/lumora)

# Debian's changelog carries the date in RFC 2822 form.
execute_process(COMMAND date -u -R -d "${LUMORA_RELEASE_DATE} 12:00"
                OUTPUT_VARIABLE LUMORA_RELEASE_DATE_RFC2822 OUTPUT_STRIP_TRAILING_WHITESPACE)
configure_file(${_pkg}/changelog.in ${_gen}/changelog @ONLY)
configure_file(${_pkg}/lumora.1 ${_gen}/lumora.1 @ONLY)
configure_file(${_pkg}/${LUMORA_APP_ID}.metainfo.xml.in ${_gen}/${LUMORA_APP_ID}.metainfo.xml @ONLY)

# gzip -n: no name or time stamp in the header, so the package is reproducible.
find_program(LUMORA_GZIP gzip REQUIRED)
foreach(_file changelog lumora.1)
  add_custom_command(OUTPUT ${_gen}/${_file}.gz
                     COMMAND ${LUMORA_GZIP} -9nkf ${_gen}/${_file}
                     DEPENDS ${_gen}/${_file}
                     COMMENT "Compressing ${_file}")
  list(APPEND _compressed ${_gen}/${_file}.gz)
endforeach()
add_custom_target(lumora_packaging_files ALL DEPENDS ${_compressed})

install(FILES ${_gen}/lumora.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${_gen}/changelog.gz ${_pkg}/copyright DESTINATION ${_doc})
install(FILES ${_gen}/${LUMORA_APP_ID}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${_pkg}/${LUMORA_APP_ID}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME lumora)
set(CPACK_PACKAGE_VENDOR "The Lumora developers")
set(CPACK_PACKAGE_CONTACT ${LUMORA_CONTACT})
set(CPACK_PACKAGE_HOMEPAGE_URL ${LUMORA_HOMEPAGE})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${LUMORA_SUMMARY})
set(CPACK_PACKAGE_DESCRIPTION ${LUMORA_DESCRIPTION})
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)

# The systemd user unit: the autostart switch enables it where systemd runs the session, and
# systemd restarts the agent when the display server went away under it.
set(LUMORA_UNIT_BINARY ${CPACK_PACKAGING_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/lumora)
configure_file(${_pkg}/lumora.service.in ${_gen}/lumora.service @ONLY)
install(FILES ${_gen}/lumora.service DESTINATION lib/systemd/user)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# logind: backlight without root, the lid and sleep inhibitors. A tray host: GNOME has none
# without the extension; the other desktops' panels are one.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "default-logind | logind, gnome-shell-extension-appindicator | plasma-workspace | xfce4-panel | mate-panel | lxqt-panel | waybar")

set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
set(CPACK_RPM_PACKAGE_LICENSE MIT)
set(CPACK_RPM_PACKAGE_GROUP "Applications/System")
set(CPACK_RPM_PACKAGE_URL ${LUMORA_HOMEPAGE})
set(CPACK_RPM_PACKAGE_DESCRIPTION ${LUMORA_DESCRIPTION})
# No /usr/lib/.build-id links: they belong in a debuginfo package, which this is not.
set(CPACK_RPM_SPEC_MORE_DEFINE "%define _build_id_links none")
# Folders the base system owns: the package must not claim them.
set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
    /usr/lib/udev /usr/lib/udev/rules.d /usr/lib/modules-load.d /usr/lib/systemd
    /usr/lib/systemd/user /usr/share/applications
    /usr/share/bash-completion /usr/share/bash-completion/completions /usr/share/doc
    /usr/share/icons /usr/share/icons/hicolor /usr/share/icons/hicolor/scalable
    /usr/share/icons/hicolor/scalable/apps /usr/share/man /usr/share/man/man1 /usr/share/metainfo
    /usr/share/zsh /usr/share/zsh/site-functions)
include(CPack)
