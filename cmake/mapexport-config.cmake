# find_package(mapexport): the targets mapexport::ModelReader, the header that reads model files, and
# mapexport::mapexport, the program; and mapexport_add_levels.
include(${CMAKE_CURRENT_LIST_DIR}/mapexport-targets.cmake)

# mapexport_add_levels(TARGET NAME SCENES SCENE... [OUTPUT_FOLDER DIR] [LAYOUT qob|kob] [OPTIONS OPTION...])
#
# adds the target NAME, part of "all", that exports each scene to DIR/SCENE.kob (or .qob), and again
# when a file that it was read from, an option or the program changes. OPTIONS are those of `mapexport
# export`; name files by absolute paths there. Scenes are relative to the current source folder, DIR,
# by default the current binary folder, to that.
function(mapexport_add_levels)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "TARGET;OUTPUT_FOLDER;LAYOUT" "SCENES;OPTIONS")
  if(NOT arg_TARGET AND arg_UNPARSED_ARGUMENTS)
    list(POP_FRONT arg_UNPARSED_ARGUMENTS arg_TARGET)  # the keyword may be left out
  endif()
  list(REMOVE_ITEM arg_KEYWORDS_MISSING_VALUES OPTIONS)
  if(NOT arg_TARGET OR NOT arg_SCENES OR arg_UNPARSED_ARGUMENTS OR arg_KEYWORDS_MISSING_VALUES)
    message(FATAL_ERROR "mapexport_add_levels: TARGET and SCENES are needed, and nothing but OUTPUT_FOLDER, "
                        "LAYOUT and OPTIONS beside them, with values: "
                        "${arg_UNPARSED_ARGUMENTS} ${arg_KEYWORDS_MISSING_VALUES}")
  endif()
  if(NOT arg_LAYOUT)
    set(arg_LAYOUT kob)
  elseif(NOT arg_LAYOUT MATCHES "^[qk]ob$")
    message(FATAL_ERROR "mapexport_add_levels: LAYOUT is qob or kob, not ${arg_LAYOUT}")
  endif()
  if(arg_OPTIONS MATCHES "(^|;)(--(layout|output-folder|depfile))(=|;|$)")
    message(FATAL_ERROR "mapexport_add_levels: it sets ${CMAKE_MATCH_2} itself")
  endif()
  if(NOT arg_OUTPUT_FOLDER)
    set(arg_OUTPUT_FOLDER ${CMAKE_CURRENT_BINARY_DIR})
  endif()
  cmake_path(ABSOLUTE_PATH arg_OUTPUT_FOLDER BASE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR} NORMALIZE)
  set(rules ${CMAKE_CURRENT_BINARY_DIR}/CMakeFiles/${arg_TARGET}.rules)
  file(MAKE_DIRECTORY ${rules})
  # Generator expressions that give nothing are left out, as COMMAND_EXPAND_LISTS does; but what holds a
  # semicolon stays one option.
  string(REPLACE "\\;" "\\\\;" arg_OPTIONS "${arg_OPTIONS}")
  # The program's libraries shape the outputs, too.
  file(GLOB program ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/../../mapexport/*.so)
  list(APPEND program $<TARGET_FILE:mapexport::mapexport>)
  set(outputs "")
  foreach(scene IN LISTS arg_SCENES)
    cmake_path(ABSOLUTE_PATH scene BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} NORMALIZE)
    cmake_path(GET scene FILENAME name)
    string(REGEX REPLACE "(.)(\\.scene\\.json|\\.scene\\.bin|\\.[^.]*)$" "\\1" name "${name}")
    set(output ${arg_OUTPUT_FOLDER}/${name}.${arg_LAYOUT})
    if(output IN_LIST outputs)
      message(FATAL_ERROR "mapexport_add_levels: two scenes would be exported to ${output}")
    endif()
    list(APPEND outputs ${output})
    add_custom_command(
      OUTPUT ${output}
      COMMAND mapexport::mapexport export ${scene} --output-folder ${arg_OUTPUT_FOLDER}
              --layout ${arg_LAYOUT} --depfile ${rules}/${name}.d --fresh --seed 1 --no-log --quiet
              ${arg_OPTIONS}
      DEPENDS ${scene} ${program}
      DEPFILE ${rules}/${name}.d
      COMMENT "Exporting ${name}.${arg_LAYOUT}"
      VERBATIM COMMAND_EXPAND_LISTS)
  endforeach()
  add_custom_target(${arg_TARGET} ALL DEPENDS ${outputs})
endfunction()
