# A Debian package of everything that is installed: `cpack --preset release`, or `./dev package`.
install(FILES ${PROJECT_SOURCE_DIR}/CHANGELOG.md TYPE DOC)

set(CPACK_PACKAGE_NAME ksntfx)
set(CPACK_PACKAGE_VENDOR "Ksntfx developers")
set(CPACK_PACKAGE_CONTACT "Ksntfx developers <ksntfx@localhost>" CACHE STRING "Who maintains the package")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "reads, writes and draws files of the NITF imagery format")
set(CPACK_PACKAGE_DESCRIPTION
    "Ksntfx reads and writes files of the National Imagery Transmission Format,
version 2.1, and draws the picture that their images, drawings and texts make.
This package holds the program ntf, the libraries, and what programs that use
them are built with.")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
# The folders' permissions are not to depend on who builds the package.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                                WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Texts of drawings are empty without fonts.
set(CPACK_DEBIAN_PACKAGE_DEPENDS fonts-liberation)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
