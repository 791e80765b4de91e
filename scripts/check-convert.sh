#!/usr/bin/env bash
# Converts the golden scenes, the example and the rooms, and checks the files: check-convert.sh
# MAPEXPORT WORK [SCENES]. WORK is a folder for the files, SCENES one of further scenes. The validator
# is installed once, into build/. Ends with 77 where there is no Node.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
if ! command -v node >/dev/null || ! command -v npm >/dev/null; then
  echo "Node is not installed: the converted files are not checked." >&2
  exit 77
fi

modules=$root/build/convert-modules
lock=package-lock.json
if ! cmp -s -- "$root/tests/convert/$lock" "$modules/installed-$lock"; then
  mkdir -p -- "$modules"
  cp -- "$root/tests/convert/package.json" "$root/tests/convert/$lock" "$modules/"
  (cd -- "$modules" && npm ci --no-audit --no-fund --ignore-scripts)
  cp -- "$modules/$lock" "$modules/installed-$lock"
fi
exec node "$root/tests/convert/check_convert.mjs" "$1" "$root" "$modules" "$2" ${3+"$3"}
