#!/usr/bin/env bash
# Makes the pictures of the documentation, docs/images/, from the bundled level.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"
ensure_packages "$root/scripts/packages.txt" "$root/scripts/packages-test.txt"

cd -- "$root"
cmake --preset release -DMAPEXPORT_TESTS=ON
cmake --build --preset release --target mapexport
mapexport=$root/build/release/bin/mapexport

mkdir -p build/screenshots docs/images
cd build/screenshots
"$mapexport" export "$root/examples/yard.scene.json" yard.kob \
  --fresh --seed 1 --cxp "$root/examples/yard.cxp" --quiet
"$mapexport" view yard.kob
# A face of the hut is chosen, and the collision faces are shown.
node "$root/scripts/screenshot-page.mjs" "$root/build/release/page-test" yard.kob.html \
  "$root/docs/images/view.png" 1200 760 light "#face=600" f c
echo "docs/images/view.png"
