#!/usr/bin/env bash
# Exports one scene of tests/golden in a new folder and prints what inspect says of the result.
#
#   golden-one.sh MAPEXPORT NAME FOLDER
#
# NAME.options holds further options of the export, NAME.layout the layout (without it, kob).
set -euo pipefail
unset CDPATH
mapexport=$1 name=$2 folder=$3
golden=$(cd "$(dirname "${BASH_SOURCE[0]}")/../tests/golden" && pwd)

options=()
[ ! -f "$golden/$name.options" ] || read -r -a options <"$golden/$name.options"
layout=kob
[ ! -f "$golden/$name.layout" ] || read -r layout <"$golden/$name.layout"

cp "$golden"/*.cxp "$folder"
cd "$folder"
"$mapexport" export "$golden/$name.scene.json" "$name.$layout" --fresh --seed 0 --quiet \
  ${options[@]+"${options[@]}"}
"$mapexport" inspect --json "$name.$layout"
