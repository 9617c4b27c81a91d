# Two Debian packages out of the two parts of the installation, made by `scripts/package`.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The VynlexTranslationSDK developers <vynlex@confera.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libvynlextranslationsdk${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# What the views load while they run: their QML modules, SVG pictures, and a face for each of the scripts.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS
    "qml6-module-qtquick, qml6-module-qtqml, qml6-module-qtqml-workerscript, libqt6svg6, fonts-noto-core")
# What the kit loads where it is there: without it, it is refused the address book.
if(VYNLEX_EBOOK_FOUND)
    set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS libebook-1.2-21)
endif()
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvynlextranslationsdk-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "qt6-base-dev, qt6-declarative-dev")

include(CPack)
