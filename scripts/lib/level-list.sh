# Lists of scenes, one per line, that a farm exports to FOLDER/NAME.kob or .qob. To be sourced.
# shellcheck shell=bash

# names_of LIST: the NAME of each scene.
names_of() {
  sed -E 's|.*/||; s/(.)(\.scene\.json|\.scene\.bin|\.[^.]*)$/\1/' -- "$1"
}

# list_missing LIST FOLDER: the scenes of which there is no output.
list_missing() {
  local name scene
  paste -- <(names_of "$1") "$1" | while IFS=$'\t' read -r name scene; do
    [[ -f $2/$name.kob || -f $2/$name.qob ]] || printf '%s\n' "$scene"
  done
}

# prepare_list LIST FOLDER MISSING: makes the folder and prints the name of the list to export: LIST, or
# with MISSING a list of the scenes that have no output. Fails when two scenes have the same NAME.
prepare_list() {
  local twice list
  twice=$(names_of "$1" | sort | uniq -d)
  [[ -z $twice ]] || { echo "$1: several scenes are named ${twice//$'\n'/, }" >&2; return 2; }
  mkdir -p -- "$2"
  list=$1
  if [[ -n $3 ]]; then
    list=$(mktemp "$2/missing-XXXXXX.txt")  # an earlier one may still be in use
    list_missing "$1" "$2" >"$list"
  fi
  printf '%s\n' "$list"
}
