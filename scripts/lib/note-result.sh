# Sourced by the scripts for robustness: writes their results as rows of a table.
# shellcheck shell=bash

# note_result FILE WHAT INPUTS FINDINGS HOW: writes the tab-separated row into
# build/robustness/FILE, replacing an earlier row with the same WHAT.
note_result() {
  # shellcheck disable=SC2154 # root is the script's
  local file=$root/build/robustness/$1 row rows
  shift
  mkdir -p -- "${file%/*}"
  printf -v row '%s\t%s\t%s\t%s' "$@"
  rows=$(awk -F '\t' -v what="$1" -v row="$row" \
    '$1 == what { print row; found = 1; next } { print } END { if (!found) print row }' \
    "$(if [[ -f $file ]]; then echo "$file"; else echo /dev/null; fi)")
  printf '%s\n' "$rows" >"$file"
}
