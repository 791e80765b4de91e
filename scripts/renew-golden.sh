#!/usr/bin/env bash
# Writes the expected files of tests/golden anew from the built program. Review the difference.
#
#   scripts/renew-golden.sh [MAPEXPORT]
set -euo pipefail
unset CDPATH
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
mapexport=$(realpath "${1:-$root/build/release/bin/mapexport}")

grep -o '^[^# ]*' "$root/tests/golden/cases.txt" | while read -r name; do
  folder=$(mktemp -d)
  trap 'rm -rf -- "$folder"' EXIT
  "$root/scripts/golden-one.sh" "$mapexport" "$name" "$folder" >"$folder/expected"
  mv "$folder/expected" "$root/tests/golden/$name.expected.json"
  rm -r "$folder"
done
git -C "$root" diff --stat -- tests/golden
