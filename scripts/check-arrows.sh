#!/usr/bin/env bash
# Checks every #include of src/ against the mapexport_room lines of src/CMakeLists.txt, and that each
# function is declared in the room that defines it (lib/check_definitions.py). Prints violations as
# FILE:LINE and ends with 1.
#
# Further rules: the host's library includes only itself; exporter/load includes plugin and what plugin
# may include; app/main includes app; app/pages includes app and cli; side B includes only host of side
# A, the exporter; side A uses only the standard library; geometry and modelwriter take values, so they
# never include ProcessState.h; only window includes Qt; no two headers define types of one name.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
cd -- "$root/src"
status=0

side_a="host base materials geometry modelwriter plugin exporter/load"
standard_headers="
  algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono
  cinttypes climits clocale cmath codecvt compare complex concepts condition_variable coroutine
  csetjmp csignal cstdarg cstddef cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype deque
  exception execution filesystem format forward_list fstream functional future initializer_list
  iomanip ios iosfwd iostream istream iterator latch limits list locale map memory memory_resource
  mutex new numbers numeric optional ostream queue random ranges ratio regex scoped_allocator
  semaphore set shared_mutex source_location span sstream stack stdexcept stop_token streambuf
  string string_view syncstream system_error thread tuple type_traits typeindex typeinfo
  unordered_map unordered_set utility valarray variant vector version"

# shellcheck disable=SC2016  # the $ are awk's
find . -type f \( -name '*.h' -o -name '*.cpp' \) -printf '%P\0' | LC_ALL=C sort -z |
  xargs -0 awk -v side_a="$side_a" -v standard_headers="$standard_headers" '
    function Allow(room, included) { allowed[room, included] = 1 }

    # One whole mapexport_room call: NAME [INCLUDES ROOM...] [LIBRARIES LIB...] [FOLDER PATH]
    function ReadRoom(call,    words, count, i, keyword, room) {
      count = split(call, words, " ")
      room = words[1]
      folderOf[room] = room
      for (i = 2; i <= count; ++i) {
        if (words[i] ~ /^(INCLUDES|LIBRARIES|FOLDER)$/) {
          keyword = words[i]
        } else if (keyword == "FOLDER") {
          folderOf[room] = words[i]
        } else if (keyword == "INCLUDES") {
          Allow(room, words[i])
          if (!(room in isSideA) && words[i] in isSideA && words[i] != "host") {
            Complain("CMakeLists.txt", callLine, "side B room " room " may not include " words[i])
          }
        }
      }
      ++roomCount
    }

    # The room a path under src/ belongs to; the deepest folder decides. Empty when there is none.
    function RoomOf(path,    folder) {
      folder = path
      while (sub(/\/[^\/]*$/, "", folder)) {
        if (folder in roomOf) return roomOf[folder]
      }
      return ""
    }

    function Complain(file, line, what) {
      printf "src/%s:%d: %s\n", file, line, what
      bad = 1
    }

    BEGIN {
      count = split(side_a, names, " ")
      for (i = 1; i <= count; ++i) isSideA[names[i]] = 1
      count = split(standard_headers, names, " ")
      for (i = 1; i <= count; ++i) isStandard[names[i]] = 1

      while ((status = (getline text < "CMakeLists.txt")) > 0) {
        ++lineNumber
        sub(/#.*/, "", text)
        if (call == "" && text ~ /^[ \t]*mapexport_room\(/) {
          callLine = lineNumber
          sub(/^[ \t]*mapexport_room\(/, "", text)
          call = " "
        }
        if (call == "") continue
        call = call " " text
        if (call ~ /\)/) {
          sub(/\).*/, "", call)
          ReadRoom(call)
          call = ""
        }
      }
      if (status < 0 || roomCount == 0) {
        print "src/CMakeLists.txt: no mapexport_room lines to check against"
        bad = 1
        exit
      }
      folderOf["host"] = "host"
      folderOf["exporter/load"] = "exporter/load"
      Allow("exporter/load", "plugin")
      for (room in isSideA) {
        if (("plugin", room) in allowed) Allow("exporter/load", room)
      }
      folderOf["app/main"] = "app/main"
      Allow("app/main", "app")
      folderOf["app/pages"] = "app/pages"
      Allow("app/pages", "app")
      Allow("app/pages", "cli")
      for (room in folderOf) roomOf[folderOf[room]] = room
    }

    FNR == 1 {
      room = RoomOf(FILENAME)
      if (room == "") Complain(FILENAME, 1, "the file is in no room")
    }

    /^[ \t]*#[ \t]*include[ \t]*"/ {
      split($0, parts, "\"")
      included = RoomOf(parts[2])
      if (included == "") {
        Complain(FILENAME, FNR, "\"" parts[2] "\" names no room; write \"room/File.h\"")
      } else if (included != room && !((room, included) in allowed)) {
        Complain(FILENAME, FNR, room " may not include " included " (\"" parts[2] "\")")
      }
    }

    /^[ \t]*#[ \t]*include[ \t]*</ && room in isSideA {
      split($0, parts, /[<>]/)
      if (!(parts[2] in isStandard)) {
        Complain(FILENAME, FNR, "side A takes the standard library only, not <" parts[2] ">")
      }
    }

    /^[ \t]*#[ \t]*include[ \t]*".*\/ProcessState.h"/ && (room == "geometry" || room == "modelwriter") {
      Complain(FILENAME, FNR, room " takes values, not the process\x27s state")
    }

    /^[ \t]*#[ \t]*include[ \t]*<Q[A-Z]/ && room != "window" {
      Complain(FILENAME, FNR, "only the room window includes Qt")
    }

    # Two types of one name are one for the linker, which takes the constructor of either.
    FILENAME ~ /\.h$/ && /^(struct|class|enum|union) .*([{:]|[^;])$/ && !/^[^{:]*</ {
      match($0, /^(struct|class|enum class|enum|union) [A-Za-z0-9_]+/)
      name = substr($0, RSTART, RLENGTH)
      sub(/.* /, "", name)
      if (name in typeOf) Complain(FILENAME, FNR, typeOf[name] " has a type " name ", too")
      typeOf[name] = FILENAME
    }

    END { exit bad }
  ' || status=1
python3 -B "$root/scripts/lib/check_definitions.py" || status=1
if [[ $status -ne 0 ]]; then
  echo "The arrows between the rooms are broken." >&2
  exit 1
fi
echo "Every include and every definition follows the arrows between the rooms."
