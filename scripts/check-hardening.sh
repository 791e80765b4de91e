#!/usr/bin/env bash
# Checks that the program and its libraries have what cmake/Hardening.cmake asks for, in the files and,
# where /proc shows it, in the memory of running processes: check-hardening.sh FOLDER, the folder of a
# build or an installation. Prints each property that is missing and ends with 1. Not for builds with
# sanitizers.
set -euo pipefail
unset CDPATH
export LC_ALL=C
folder=$(readlink -f -- "${1:?check-hardening.sh FOLDER}")
program=$folder/bin/mapexport
mapfile -t files < <(find "$folder/bin" "$folder"/lib* \( -name mapexport -o -name 'mapexport-*.so' \
  -o -name 'libmapexport-host.so*' \) -type f 2>/dev/null | sort -u)
bad=0

complain() {
  echo "$1: $2" >&2
  bad=1
}

# expect FILE TEXT PATTERN WHAT: a line of TEXT has PATTERN.
expect() {
  grep -qE -- "$3" <<<"$2" || complain "$1" "no $4"
}

# refuse FILE TEXT PATTERN WHAT: no line of it has.
refuse() {
  ! grep -qE -- "$3" <<<"$2" || complain "$1" "$4"
}

check_file() {
  local file=$1 header segments dynamic symbols code
  header=$(readelf -hW -- "$file")
  segments=$(readelf -lW -- "$file")
  dynamic=$(readelf -dW -- "$file")
  symbols=$(readelf --dyn-syms -W -- "$file")
  expect "$file" "$header" 'Type: +DYN' "position-independent code"
  expect "$file" "$segments" 'GNU_RELRO' "memory that is read-only once relocated"
  expect "$file" "$dynamic" 'FLAGS.*NOW' "binding at the start"
  expect "$file" "$segments" 'GNU_STACK .* RW +0x' "stack that can't be executed"
  refuse "$file" "$segments" 'LOAD .* RWE ' "a segment is writable and executable"
  refuse "$file" "$dynamic" 'TEXTREL' "its code is relocated"
  # With a fixed prefix its folder is there, too, because without /proc there is no $ORIGIN.
  dynamic=$(sed -E 's#:/[^]:]*/lib/mapexport\]#]#' <<<"$dynamic")
  refuse "$file" "$dynamic" 'R(UN)?PATH.*\[([^]]*:)?[^$]' \
    "it looks for libraries in folders that are not its own"
  # What only some code leaves a trace of; the flags are the same for all, and the host's own library
  # is too small for it.
  [[ $file != */libmapexport-host.so* ]] || return 0
  expect "$file" "$symbols" '__stack_chk_fail' "stack protector"
  if [[ $header == *X86-64* ]]; then
    code=$(objdump -d --no-show-raw-insn -- "$file")
    # The whole file is marked so only where the system's start files are; theirs are a few of these.
    [[ $(grep -c endbr64 <<<"$code") -ge 20 ]] || complain "$file" "no protected control flow"
  fi
  [[ $file == "$program" ]] || return 0
  expect "$file" "$dynamic" 'FLAGS_1.*PIE' "position-independent program"
  expect "$file" "$symbols" '__(mem|str|read|pread|snprintf|fdelt|longjmp|realpath)[a-z]*_chk' \
    "checks in library functions"
  expect "$file" "$symbols" '__glibcxx_assert_fail' "assertions of the standard library"
  [[ $header != *X86-64* ]] ||
    expect "$file" "$code" 'orq +[$]0x0,.*[(]%rsp[)]' "probing of large stack frames"
}

# check_maps PID WHAT: none of its memory is writable and executable.
check_maps() {
  local maps
  maps=$(cat "/proc/$1/maps" 2>/dev/null) || maps=""
  # Only root sees those of the reader.
  if [[ -z $maps ]]; then
    echo "note: /proc does not show the memory of $2"
    return
  fi
  refuse "$2" "$maps" '^[0-9a-f-]+ .w.x' "has memory that is writable and executable"
}

# wait_for COMMAND...: until it succeeds, for ten seconds.
wait_for() {
  local tries=0
  until "$@" 2>/dev/null; do
    tries=$((tries + 1))
    [[ $tries -lt 200 ]] || return 1
    sleep 0.05
  done
}

child_of() {
  child=$(<"/proc/$1/task/$1/children")
  child=${child%% *}
  [[ -n $child ]]
}

check_at_work() {
  local pid filter child=""
  # The export is stopped while it reads a long database, with all of its libraries loaded.
  cat >"$work/scene.scene.json" <<'JSON'
{"format": "mapexport-scene", "version": 1, "root": {"name": "Scene Root"}}
JSON
  head -c 400M /dev/zero | tr '\0' ' ' >"$work/long.cxp"
  "$program" export "$work/scene.scene.json" "$work/scene.kob" --fresh --cxp "$work/long.cxp" \
    >"$work/log" 2>&1 &
  pid=$!
  if wait_for grep -q mapexport-plugin "/proc/$pid/maps"; then
    kill -STOP "$pid"
    check_maps "$pid" "the export"
    kill -CONT "$pid"
    wait "$pid" || complain "$program" "the export failed: $(cat "$work/log")"
  else
    complain "$program" "the export does not load its library: $(cat "$work/log")"
    kill "$pid" || true
  fi

  # What the reader says of itself, where the kernel or a container has no filter for it.
  printf 'v 0 0 0\nv 10 0 0\nv 0 10 0\nf 1 2 3\n' >"$work/face.obj"
  "$program" export "$work/face.obj" "$work/face.kob" --fresh --quiet --report "$work/report" \
    >"$work/log" 2>&1 || complain "$program" "the export failed: $(cat "$work/log")"
  filter=$(sed -n 's/^ *"seccomp": "\(.*\)".*/\1/p' "$work/report")

  # A file whose reading does not end; the reader ends with the program.
  printf 'OFF\n353535235358 10 0\n0 0 0\n' >"$work/endless.off"
  "$program" scene "$work/endless.off" --read-limit 30 >"$work/log" 2>&1 &
  pid=$!
  if wait_for child_of "$pid"; then
    sleep 0.2
    check_maps "$child" "the reader of a foreign scene"
    if [[ -n $filter && $filter != "in force" ]]; then
      echo "note: the system has no filter for the reader of a foreign scene: $filter"
    else
      grep -qx 'Seccomp:[[:space:]]*2' "/proc/$child/status" ||
        complain "$program" "the reader of a foreign scene is not confined"
    fi
  else
    complain "$program" "starts no reader: $(cat "$work/log")"
  fi
  kill "$pid" || true
  wait "$pid" || true
}

names=" ${files[*]##*/} "
for name in mapexport mapexport-plugin.so libmapexport-host.so; do
  [[ $names == *" $name "* ]] || complain "$folder" "no $name to look at"
done
for file in "${files[@]}"; do
  check_file "$file"
done
if [[ -x $program && -e /proc/self/maps ]]; then
  work=$(mktemp -d)
  trap 'rm -rf -- "$work"' EXIT
  check_at_work
fi
[[ $bad -eq 0 ]] || exit 1
echo "hardened: ${files[*]##*/}"
