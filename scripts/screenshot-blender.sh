#!/usr/bin/env bash
# Takes the pictures of the add-on in docs/blender.md, docs/images/blender-export.png, -messages.png and
# -keywords.png: screenshot-blender.sh [FOLDER]. Blender shows a small level on a separate display.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
pictures=$(realpath -m -- "${1:-$root/docs/images}")
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"
ensure_packages "$root/scripts/packages.txt" "$root/scripts/packages-blender.txt" \
  "$root/scripts/packages-screenshot.txt"

cd -- "$root"
cmake --preset release >/dev/null
cmake --build --preset release --target mapexport mapexport-plugin

work=/tmp/levels  # the picture shows the name
mkdir -- "$work"
BLENDER_USER_CONFIG=$(mktemp -d)
trap 'rm -rf -- "$work" "$BLENDER_USER_CONFIG"' EXIT
export BLENDER_USER_CONFIG PATH=$root/build/release/bin:$PATH
xvfb-run -a -s "-screen 0 1200x720x24" blender -noaudio --factory-startup --enable-event-simulate \
  --window-geometry 0 0 1200 720 --python scripts/screenshot_blender.py -- "$work"
cp -- "$work"/blender-*.png "$pictures/"
