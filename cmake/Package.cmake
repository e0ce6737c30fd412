# The package for Debian: what `cmake --install` installs, made by `make package`.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "wqf maintainers <maintainers@wqf.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "looks into brick-model documents, for people and desktop indexers")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "Finds out what is in WQF documents, archives that hold a model built of
bricks: authors, brands, descriptions, the creating program, the number of
bricks and their designs.
.
It brings the document type with an icon, has Recoll and the file indexer of
KDE find documents by what is in them, and has commands that look into
documents and archives and change archives without loss.")
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${ZEMA_PRIVATE_FOLDER}")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "shared-mime-info")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "recollcmd | recollgui, baloo-kf5")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
include(CPack)
