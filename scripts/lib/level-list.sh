# Lists of scenes, one per line, that a farm exports to FOLDER/NAME.kob or .qob. To be sourced.
# shellcheck shell=bash

# explain_unless COUNT ARGUMENT...: unless there are COUNT arguments, prints the comment that the script
# begins with, and ends it.
explain_unless() {
  local wanted=$1 status=2
  shift
  if [[ ${1-} == --help ]]; then
    status=0
  elif (($# >= wanted)); then
    return
  fi
  sed -n '2,/^[^#]/s/^# \{0,1\}//p' -- "$0" >&$((status == 0 ? 1 : 2))
  exit "$status"
}

# names_of LIST: the NAME of each scene.
names_of() {
  sed -E 's|.*/||; s/(.)(\.scene\.json|\.scene\.bin|\.[^.]*)$/\1/' -- "$1"
}

# list_missing LIST FOLDER LAYOUT: the scenes of which there is no output.
list_missing() {
  local name scene
  paste -- <(names_of "$1") "$1" | while IFS=$'\t' read -r name scene; do
    [[ -f $2/$name.$3 ]] || printf '%s\n' "$scene"
  done
}

# prepare_list LIST FOLDER MISSING [OPTION...]: makes the folder and prints the name of the list to export,
# a copy in it without blank lines, with MISSING only of the scenes that have no output. Fails when two
# scenes have the same NAME.
prepare_list() {
  local from=$1 folder=$2 missing=$3 twice list layout=kob
  shift 3
  [[ -r $from && ! -d $from ]] || { echo "$from: the list can't be read" >&2; return 2; }
  mkdir -p -- "$folder"
  list=$(mktemp -- "$folder/list-XXXXXX.txt")  # an earlier one may still be in use
  awk '{ sub(/\r$/, "") } $0 != ""' <"$from" >"$list"
  twice=$(names_of "$list" | sort | uniq -d)
  if [[ -n $twice ]]; then
    rm -- "$list"
    echo "$from: several scenes are named ${twice//$'\n'/, }" >&2
    return 2
  fi
  [[ " $* " != *" --layout"[\ =]"qob "* ]] || layout=qob
  if [[ -n $missing ]]; then
    list_missing "$list" "$folder" "$layout" >"$list.missing"
    mv -- "$list.missing" "$list"
  fi
  printf '%s\n' "$list"
}
