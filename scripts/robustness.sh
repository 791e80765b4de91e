#!/usr/bin/env bash
# Makes one table, build/robustness/table.md, of the results that the scripts for robustness left in
# build/robustness: robustness.sh
#
#   robustness.sh run   runs these scripts first, with the full numbers, which takes hours
#
# A script without results gets a row that says so. Ends with 1 when there were findings.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
cd -- "$root"

document=build/robustness/table.md
parts=(damage fuzz faults same-bytes)
declare -A full=([damage]="scripts/damage.sh --full" [fuzz]="scripts/fuzz.sh 600"
  [faults]="scripts/faults.sh" [same-bytes]="scripts/same-bytes.sh")

fail() {
  echo "robustness.sh: $*" >&2
  exit 1
}

# rows PART: its lines of the table; each of its file is WHAT, INPUTS, FINDINGS, HOW between tabs.
rows() {
  local file=build/robustness/$1.tsv
  if [[ ! -s $file ]]; then
    # Between the ticks stands a name.
    # shellcheck disable=SC2016
    printf '| *not run: scripts/%s.sh* | | | `%s` |\n' "$1" "${full[$1]}"
    return
  fi
  awk -F '\t' -v file="$file" -v part="$1" '
    NF != 4 || $2 !~ /^[0-9]+$/ || $3 !~ /^[0-9]+$/ || $1 == "" || $4 == "" {
      print "robustness.sh: " file ": line " NR " is no WHAT, INPUTS, FINDINGS, HOW" > "/dev/stderr"
      exit 1
    }
    {
      gsub(/\|/, "\\|")
      how = $4 ~ /^scripts\// ? "`" $4 "`" : "`scripts/" part ".sh`: " $4
      printf "| %s | %d | %d | %s |\n", $1, $2, $3, how
    }' "$file"
}

case "${1-}" in
  "") ;;
  run)
    for part in "${parts[@]}"; do
      [[ -x scripts/$part.sh ]] || fail "scripts/$part.sh is not there"
    done
    for part in "${parts[@]}"; do
      # Results of an earlier run must not count for this one.
      rm -f -- "build/robustness/$part.tsv"
      # Findings end a script with 1; they are in its rows.
      # The command is split into words.
      # shellcheck disable=SC2086
      ${full[$part]} || echo "robustness.sh: ${full[$part]} ended with $?" >&2
    done
    ;;
  *) fail "unknown argument \"$1\"; there is only \"run\"" ;;
esac

table=$(
  printf '| tried | inputs | findings | how |\n|---|---:|---:|---|\n'
  for part in "${parts[@]}"; do
    rows "$part" || exit # -e is off in here
  done
)
mkdir -p -- "${document%/*}"
printf '%s\n' "$table" >"$document"
printf '%s\n' "$table"
! awk -F '\t' '$3 > 0 { found = 1 } END { exit !found }' build/robustness/*.tsv 2>/dev/null
