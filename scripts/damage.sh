#!/usr/bin/env bash
# Exports damaged copies of small models in the main formats, seeded: damage.sh [COUNT] [SEED], 1000
# copies of seed 0 unless given. Prints counts per format; ends with 1 when the program was ended by
# a signal, ran on, or said of a failure anything but one line. Keeps the copies that made it do so.
# MAPEXPORT names the program to try; unless given, the release build is brought up to date.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"
ensure_packages "$root/scripts/packages.txt" "$root/scripts/packages-test.txt"

if [[ -z ${MAPEXPORT:-} ]]; then
  (
    cd -- "$root"
    [[ -f build/release/build.ninja ]] || cmake --preset release >/dev/null
    cmake --build --preset release --target mapexport >/dev/null
  )
fi
exec python3 -B "$root/scripts/damage_models.py" "${MAPEXPORT:-$root/build/release/bin/mapexport}" \
  "${1:-1000}" "${2:-0}"
