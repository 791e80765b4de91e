# The Debian package that scripts/release.sh makes, and the one with its symbols.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME mapexport)
set(CPACK_PACKAGE_VENDOR "mapexport developers")
set(CPACK_PACKAGE_CONTACT "mapexport developers <mapexport@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "scene exporter for game models")
set(CPACK_PACKAGE_DESCRIPTION
  "Exports 3D scenes (FBX, glTF, OBJ, 3DS and more) to model files that are
arranged for a game engine: materials, render batches and collision lists.
Reads such files back and checks them.")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/package)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
# It strips the program, too.
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
include(CPack)

if(MAPEXPORT_FIXED_PREFIX)
  # What Debian wants of a package. The time is that of SOURCE_DATE_EPOCH.
  set(debian ${CMAKE_BINARY_DIR}/debian)
  string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
  file(WRITE ${debian}/changelog "mapexport (${PROJECT_VERSION}) unstable; urgency=medium

  * What changed is in CHANGELOG.md.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
  execute_process(COMMAND gzip -9nkf ${debian}/changelog COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${debian}/changelog.gz DESTINATION share/doc/mapexport)
endif()
