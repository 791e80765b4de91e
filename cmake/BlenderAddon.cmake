# The add-on for Blender as the zip file that its preferences install. Both kinds of installation, that of
# add-ons and, from Blender 4.2 on, that of extensions, want the package's folder as the first entry's.
set(addon ${CMAKE_BINARY_DIR}/mapexport.zip)
file(GLOB addon_files RELATIVE ${CMAKE_SOURCE_DIR}/blender CONFIGURE_DEPENDS
     ${CMAKE_SOURCE_DIR}/blender/mapexport/*.py ${CMAKE_SOURCE_DIR}/blender/mapexport/*.toml)
list(TRANSFORM addon_files PREPEND ${CMAKE_SOURCE_DIR}/blender/ OUTPUT_VARIABLE addon_sources)
# CMake's zip files hold the owner and further times of each file, so each build has other bytes.
find_package(Python3 QUIET COMPONENTS Interpreter)
if(Python3_FOUND)
  set(zip ${Python3_EXECUTABLE} -B ${CMAKE_SOURCE_DIR}/cmake/zip_addon.py ${addon} ${addon_files})
else()
  set(zip ${CMAKE_COMMAND} -E tar cf ${addon} --format=zip ${addon_files})
endif()
add_custom_command(
  OUTPUT ${addon}
  COMMAND ${zip}
  WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}/blender
  DEPENDS ${addon_sources}
  VERBATIM)
add_custom_target(mapexport-addon ALL DEPENDS ${addon})
install(FILES ${addon} DESTINATION share/mapexport/blender)
