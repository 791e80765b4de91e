# The Debian package that scripts/package.sh makes.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME mapexport)
set(CPACK_PACKAGE_VENDOR "mapexport developers")
set(CPACK_PACKAGE_CONTACT "mapexport developers <mapexport@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "scene exporter for game models")
set(CPACK_PACKAGE_DESCRIPTION
  "Exports 3D scenes (FBX, glTF, OBJ, 3DS and more) to model files that are arranged for a game
 engine: materials, render batches and collision lists. Reads such files back and checks them.")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/package)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
include(CPack)
