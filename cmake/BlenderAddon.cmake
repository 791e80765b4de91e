# The add-on for Blender as the zip file that its preferences install. Both kinds of installation, that of
# add-ons and, from Blender 4.2 on, that of extensions, want the package's folder as the first entry's.
set(addon ${CMAKE_BINARY_DIR}/mapexport.zip)
file(GLOB addon_files RELATIVE ${CMAKE_SOURCE_DIR}/blender CONFIGURE_DEPENDS
     ${CMAKE_SOURCE_DIR}/blender/mapexport/*.py ${CMAKE_SOURCE_DIR}/blender/mapexport/*.toml)
list(TRANSFORM addon_files PREPEND ${CMAKE_SOURCE_DIR}/blender/ OUTPUT_VARIABLE addon_sources)
add_custom_command(
  OUTPUT ${addon}
  COMMAND ${CMAKE_COMMAND} -E tar cf ${addon} --format=zip "--mtime=2000-01-01 00:00:00 UTC" ${addon_files}
  WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}/blender
  DEPENDS ${addon_sources}
  VERBATIM)
add_custom_target(mapexport-addon ALL DEPENDS ${addon})
install(FILES ${addon} DESTINATION share/mapexport/blender)
