# The two Debian packages, by `cpack -G DEB` (tools/build-package).
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vemo)
set(CPACK_PACKAGE_VENDOR "The Vemo authors")
set(CPACK_PACKAGE_CONTACT "The Vemo authors <vemo@brelmox.example>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL vemo vemo-service)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_VEMO_PACKAGE_NAME vemo)
set(CPACK_DEBIAN_VEMO_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_VEMO_DESCRIPTION "dictation into any application
Vemo waits in the background, records while you hold a key, has the speech
turned into text by a service, shapes the text for the application in front,
and pastes it where the cursor is. The clipboard gets back what it held.")
# What is loaded while it runs, which no binary names.
set(CPACK_DEBIAN_VEMO_PACKAGE_DEPENDS
  "qml6-module-qtquick, qml6-module-qtquick-controls, qml6-module-qtquick-layouts, qml6-module-qtquick-templates, qml6-module-qtquick-window, qml6-module-qtqml, qml6-module-qtqml-workerscript")
set(CPACK_DEBIAN_VEMO_PACKAGE_RECOMMENDS
  "vemo-service, at-spi2-core, ca-certificates, gnome-keyring | libkf5wallet-bin, libcanberra-pulse, pipewire-pulse | pulseaudio, xdg-utils")
set(CPACK_DEBIAN_VEMO_PACKAGE_SUGGESTS "libsecret-tools, notification-daemon, xdg-desktop-portal")

set(CPACK_DEBIAN_VEMO-SERVICE_PACKAGE_NAME vemo-service)
set(CPACK_DEBIAN_VEMO-SERVICE_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_VEMO-SERVICE_DESCRIPTION "speech recognition service for Vemo
The companion of Vemo: turns recordings into text on this machine, without
network and without an account, or passes them on to a better recogniser
of your choice. It can keep accounts and their dictionaries for many users.")
set(CPACK_DEBIAN_VEMO-SERVICE_PACKAGE_DEPENDS "pocketsphinx-en-us")
set(CPACK_DEBIAN_VEMO-SERVICE_PACKAGE_RECOMMENDS "ca-certificates")

# Debian's files about a package: who may copy it, and what changed.
foreach(component vemo vemo-service)
  install(FILES debian/copyright DESTINATION share/doc/${component} COMPONENT ${component})
endforeach()
execute_process(COMMAND env LC_ALL=C date -u -R -d ${VEMO_VERSION_DATE}
  OUTPUT_VARIABLE VEMO_VERSION_TIME OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
configure_file(debian/changelog ${CMAKE_CURRENT_BINARY_DIR}/changelog @ONLY)
compressed(changelog share/doc/COMPONENT vemo vemo-service)

include(CPack)
