#!/usr/bin/env bash
# Exports one case of tests/golden/cases.txt in a new folder and prints what inspect says of the result.
#
#   golden-one.sh MAPEXPORT CASE FOLDER
set -euo pipefail
unset CDPATH
mapexport=$1 wanted=$2 folder=$3
golden=$(cd "$(dirname "${BASH_SOURCE[0]}")/../tests/golden" && pwd)

read -r _ scene layout options < <(grep "^$wanted " "$golden/cases.txt") || {
  echo "golden-one.sh: there is no case \"$wanted\"" >&2
  exit 1
}
read -ra options <<<"$options"
cp "$golden"/*.cxp "$folder"
cd "$folder"
"$mapexport" export "$golden/$scene.scene.json" "$wanted.$layout" --fresh --seed 0 --quiet \
  ${options[@]+"${options[@]}"}
"$mapexport" inspect --json "$wanted.$layout"
