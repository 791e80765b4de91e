#!/usr/bin/env bash
# Writes the expected files of tests/models anew from the built program: for each room.FORMAT the scene
# that the exporter sees and the export of it. Review the difference.
#
#   scripts/renew-rooms.sh [MAPEXPORT]
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
mapexport=$(realpath "${1:-$root/build/release/bin/mapexport}")
models=$root/tests/models

folder=$(mktemp -d)
trap 'rm -r "$folder"' EXIT
cd "$folder"
for format in 3ds ase dae fbx gltf obj; do
  room=$models/room.$format
  "$mapexport" scene "$room" >seen
  "$mapexport" export "$room" room.kob --fresh --seed 0 --quiet
  "$mapexport" inspect --json room.kob >expected
  mv seen "$room.scene.json"
  mv expected "$room.expected.json"
done
git -C "$root" diff --stat -- tests/models
