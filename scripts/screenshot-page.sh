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
"$mapexport" view yard.kob --textures "$root/examples/textures"
# A face of the hut is chosen.
node "$root/scripts/screenshot-page.mjs" "$root/build/release/page-test" yard.kob.html \
  "$root/docs/images/view.png" 1200 760 light "#face=600" f
echo "docs/images/view.png"
"$mapexport" picture yard.kob -o "$root/docs/images/picture.png"
"$mapexport" picture yard.kob -o "$root/docs/images/sheet.png" --sheet
echo "docs/images/picture.png and sheet.png"

# The barrel is gone, the roof is higher, the bench moved along the wall.
python3 - "$root/examples/yard.scene.json" changed.scene.json <<'EOF'
import json, sys

with open(sys.argv[1]) as file:
    scene = json.load(file)
MOVES = {"Hut_Roof": (2, 40), "Bench": (0, 60), "Crate_2": (2, 40)}

def change(node):
    children = node.get("children", [])
    node["children"] = [child for child in children if child["name"] != "Barrel"]
    axis, distance = MOVES.get(node["name"], (0, 0))
    for vertex in node.get("mesh", {}).get("vertices", []):
        vertex[axis] += distance
    for child in node["children"]:
        change(child)

change(scene["root"])
with open(sys.argv[2], "w") as file:
    json.dump(scene, file)
EOF
"$mapexport" export changed.scene.json changed.kob \
  --fresh --seed 1 --cxp "$root/examples/yard.cxp" --quiet
"$mapexport" view yard.kob --compare changed.kob -o compare.html
node "$root/scripts/screenshot-page.mjs" "$root/build/release/page-test" compare.html \
  "$root/docs/images/compare.png" 1200 760 light "" f
echo "docs/images/compare.png"
