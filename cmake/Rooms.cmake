# A room is a folder of src/: its sources, and the rooms below it that it may include.
#
#   mapexport_room(NAME [INCLUDES ROOM...] [LIBRARIES LIB...] [FOLDER PATH])
#
# makes the object library NAME of the sources in src/NAME (or src/PATH) and the folders in it, but those
# that hold a main function or are a separate library (main, pages). INCLUDES are the only other rooms
# that its files may include; scripts/check-arrows.sh checks the files against these lines.
function(mapexport_room name)
  cmake_parse_arguments(ROOM "" "FOLDER" "INCLUDES;LIBRARIES" ${ARGN})
  if(NOT ROOM_FOLDER)
    set(ROOM_FOLDER ${name})
  endif()
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/${ROOM_FOLDER}/*.cpp)
  list(FILTER sources EXCLUDE REGEX "/(main|pages)/[^/]*$")
  if(NOT sources)
    message(FATAL_ERROR "The room src/${ROOM_FOLDER} has no sources")
  endif()
  add_library(${name} OBJECT ${sources})
  target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC ${ROOM_INCLUDES} ${ROOM_LIBRARIES})
endfunction()
