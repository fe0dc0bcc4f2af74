# Fails when a file includes a header from a layer above its own. Run at build time (before the
# layers compile) and as a test:  cmake -DROOT=<source dir> -P cmake/CheckLayers.cmake
# The layers, lowest first; folders on one line share a level and may not include each other.
set(levels
  "platform"
  "geometry"
  "text"
  "interchange"
  "formats"
  "corkboard;pagelayout")

set(rank_index 0)
foreach(level IN LISTS levels)
  foreach(folder IN ITEMS ${level})
    set(rank_${folder} ${rank_index})
  endforeach()
  math(EXPR rank_index "${rank_index} + 1")
endforeach()

set(violations "")
# Library sources live in src/qlyappkit/<layer>/, their tests in tests/<layer>/.
foreach(kind src tests)
  if(kind STREQUAL "src")
    set(shown_base "src/qlyappkit")
  else()
    set(shown_base "tests")
  endif()
  set(base "${ROOT}/${shown_base}")
  file(GLOB_RECURSE files RELATIVE "${base}" "${base}/*.h" "${base}/*.cpp")
  foreach(file IN LISTS files)
    string(REGEX MATCH "^[^/]+" own "${file}")
    if(NOT DEFINED rank_${own})
      continue()   # tests/support, tests/tool and the like may use every layer
    endif()
    file(STRINGS "${base}/${file}" lines REGEX "^[ \t]*#[ \t]*include[ \t]*[<\"]qlyappkit/")
    foreach(line IN LISTS lines)
      string(REGEX REPLACE "^[ \t]*#[ \t]*include[ \t]*[<\"]qlyappkit/([^/>\"]+).*$" "\\1" target "${line}")
      if(NOT DEFINED rank_${target})
        list(APPEND violations "${shown_base}/${file}: includes an unknown layer '${target}'")
      elseif(rank_${target} GREATER rank_${own}
             OR (rank_${target} EQUAL rank_${own} AND NOT target STREQUAL own))
        string(STRIP "${line}" shown)
        list(APPEND violations "${shown_base}/${file}: '${shown}' reaches from ${own} up to ${target}")
      endif()
    endforeach()
  endforeach()
endforeach()

if(violations)
  list(JOIN violations "\n  " text)
  message(FATAL_ERROR "A layer includes a layer above it (lowest first: platform, geometry, text, "
                      "interchange, formats, corkboard/pagelayout):\n  ${text}")
endif()
