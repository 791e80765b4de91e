#!/usr/bin/env bash
# Builds mapexport and exports the bundled level to both layouts, then shows what came out.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"
ensure_packages "$root/scripts/packages.txt"

cd -- "$root"
# A new build folder is configured without the tests, which need more packages. An existing one, from
# scripts/test.sh for instance, keeps its configuration.
if [[ ! -f build/release/build.ninja ]]; then
  cmake --preset release -DMAPEXPORT_TESTS=OFF
fi
cmake --build --preset release --target mapexport
mapexport=$root/build/release/bin/mapexport

# The exporter writes its log, ExportDebug.txt, into the current folder.
mkdir -p build/example
cd build/example
for layout in qob kob; do
  echo
  echo "== examples/yard.scene.json -> build/example/yard.$layout"
  "$mapexport" export "$root/examples/yard.scene.json" "yard.$layout" \
    --fresh --seed 1 --cxp "$root/examples/yard.cxp"
  echo
  "$mapexport" inspect "yard.$layout"
done
echo
echo "The model files and the exporter's log, ExportDebug.txt, are in build/example."
