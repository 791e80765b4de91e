# The page of `mapexport view`, which Node.js bundles from viewer/.
#
#   mapexport_npm(NAME FOLDER RESULT)
#
# installs what FOLDER/package-lock.json lists into build/NAME/node_modules and sets RESULT to
# whether that is there; where it is not, a note says why.
#
#   mapexport_page(ROOM)
#
# bundles the page into ROOM. Without Node.js, or when its packages can't be had, ROOM gets an empty
# page, and MAPEXPORT_HAS_PAGE is OFF.

if(MAPEXPORT_VIEW)
  find_program(MAPEXPORT_NODE NAMES node nodejs)
  find_program(MAPEXPORT_NPM npm)
endif()

function(mapexport_npm name folder result)
  set(${result} OFF PARENT_SCOPE)
  if(NOT MAPEXPORT_NODE OR NOT MAPEXPORT_NPM)
    message(STATUS "note: no ${name}: Node.js or npm is missing")
    return()
  endif()
  execute_process(COMMAND ${MAPEXPORT_NODE} --version OUTPUT_VARIABLE version ERROR_QUIET)
  if(NOT version MATCHES "^v([0-9]+)" OR CMAKE_MATCH_1 LESS 18)
    message(STATUS "note: no ${name}: it needs Node.js 18 or later")
    return()
  endif()

  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${folder}/package-lock.json)
  set(target ${CMAKE_BINARY_DIR}/${name})
  file(SHA256 ${folder}/package-lock.json wanted)
  set(installed "")
  if(EXISTS ${target}/installed)
    file(READ ${target}/installed installed)
  endif()
  if(NOT installed STREQUAL wanted)
    file(REMOVE ${target}/installed ${target}/npm.log)
    file(COPY ${folder}/package.json ${folder}/package-lock.json DESTINATION ${target})
    message(STATUS "Installing the packages of ${name}")
    # Without a network it must fail soon: the program is built without.
    execute_process(
      COMMAND ${MAPEXPORT_NPM} ci --ignore-scripts --no-audit --no-fund --prefer-offline
              --fetch-retries=1 --fetch-retry-mintimeout=1000 --fetch-timeout=30000
      WORKING_DIRECTORY ${target} TIMEOUT 240
      RESULT_VARIABLE failed OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(failed)
      file(WRITE ${target}/npm.log "${output}")
      message(STATUS "note: no ${name}: npm ci failed, see ${target}/npm.log")
      return()
    endif()
    file(WRITE ${target}/installed ${wanted})
  endif()
  set(${result} ON PARENT_SCOPE)
endfunction()

function(mapexport_page room)
  set(has_page OFF)
  if(MAPEXPORT_VIEW)
    mapexport_npm(viewer ${CMAKE_SOURCE_DIR}/viewer has_page)
  endif()
  set(generated ${CMAKE_CURRENT_BINARY_DIR}/generated/view)
  if(has_page)
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/viewer/src/*)
    add_custom_command(
      OUTPUT ${generated}/ViewerPage.cpp ${generated}/page.html
      COMMAND ${CMAKE_COMMAND} -E make_directory ${generated}
      COMMAND ${MAPEXPORT_NODE} ${CMAKE_SOURCE_DIR}/viewer/bundle.mjs
              ${CMAKE_BINARY_DIR}/viewer ${generated}
      DEPENDS ${CMAKE_SOURCE_DIR}/viewer/bundle.mjs ${sources} ${CMAKE_BINARY_DIR}/viewer/installed
              ${CMAKE_SOURCE_DIR}/docs/notices.md
      COMMENT "Bundling the page of mapexport view" VERBATIM)
    target_sources(${room} PRIVATE ${generated}/ViewerPage.cpp)
    # Not every compiler must take a text as long as the page.
    set_source_files_properties(${generated}/ViewerPage.cpp PROPERTIES
      COMPILE_OPTIONS "$<$<CXX_COMPILER_ID:Clang>:-Wno-overlength-strings>")
  else()
    message(STATUS "note: mapexport is built without the command view")
    file(CONFIGURE OUTPUT ${generated}/NoPage.cpp @ONLY CONTENT
"// The page that there is none of.
#include \"view/ViewerPage.h\"

const std::string_view mapexport::kViewerPage{};
const std::string_view mapexport::kViewerPolicy{};
const std::string_view mapexport::kServedPolicy{};
const std::string_view mapexport::kReloadScript{};
")
    target_sources(${room} PRIVATE ${generated}/NoPage.cpp)
  endif()
  set(MAPEXPORT_HAS_PAGE ${has_page} CACHE INTERNAL "Whether the program can make pages")
endfunction()
